#include "App/SessionBus.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace mossbit {

namespace {

const QString busName = QStringLiteral("com.quillark.mossbit");
const QString objectPath = QStringLiteral("/com/quillark/mossbit");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

/// In milliseconds.
constexpr int answerLimit = 2000;

/// The desktop's permission to come to the front: what it calls it in a call, and the variable in
/// which it gives it to a program that it starts.
struct Token {
    const char* key;
    const char* variable;
};
constexpr Token tokens[] = {{"activation-token", "XDG_ACTIVATION_TOKEN"},
                            {"desktop-startup-id", "DESKTOP_STARTUP_ID"}};

QVariantMap platformData() {
    QVariantMap data;
    for (const auto& [key, variable] : tokens) {
        if (qEnvironmentVariableIsSet(variable))
            data.insert(QLatin1String(key), qEnvironmentVariable(variable));
    }
    return data;
}

void acceptTokens(const QVariantMap& platformData) {
    for (const auto& [key, variable] : tokens) {
        const QByteArray token = platformData.value(QLatin1String(key)).toString().toUtf8();
        if (!token.isEmpty())
            qputenv(variable, token);
    }
}

/// Replies at once: what a request leads to may ask the user something.
class Adaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit Adaptor(SessionBus& bus) : QDBusAbstractAdaptor(&bus), m_bus(bus) {}

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the interface's names.
    void Activate(const QVariantMap& platformData) {
        acceptTokens(platformData);
        QMetaObject::invokeMethod(&m_bus, &SessionBus::activated, Qt::QueuedConnection);
    }

    void Open(const QStringList& uris, const QVariantMap& platformData) {
        if (uris.isEmpty())
            return Activate(platformData);
        acceptTokens(platformData);
        QMetaObject::invokeMethod(
            &m_bus, [this, uris] { Q_EMIT m_bus.openRequested(uris); }, Qt::QueuedConnection);
    }

    /// The application has no actions of its own; like any request, it brings the window up.
    void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) {
        Activate(platformData);
    }
    // NOLINTEND(readability-identifier-naming)

private:
    SessionBus& m_bus;
};

} // namespace

SessionBus::Role SessionBus::join(const QString& file) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return Role::alone;
    // The object before the name: who finds the name may call at once.
    new Adaptor(*this);
    bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    if (bus.registerService(busName))
        return Role::first;
    if (handOver(file))
        return Role::handedOver;
    // When the silent owner ends, requests come here.
    bus.interface()->registerService(busName, QDBusConnectionInterface::QueueService);
    return Role::alone;
}

bool SessionBus::handOver(const QString& file) const {
    QDBusMessage call = QDBusMessage::createMethodCall(busName, objectPath, interfaceName,
                                                       file.isEmpty() ? QStringLiteral("Activate")
                                                                      : QStringLiteral("Open"));
    call.setAutoStartService(false);
    if (!file.isEmpty())
        call << QStringList(file);
    call << platformData();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, answerLimit);
    return reply.type() == QDBusMessage::ReplyMessage;
}

} // namespace mossbit

#include "SessionBus.moc"
