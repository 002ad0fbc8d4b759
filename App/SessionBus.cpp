#include "App/SessionBus.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

#include <chrono>

namespace mossbit {

namespace {

const QString busName = QStringLiteral("com.quillark.mossbit");
const QString objectPath = QStringLiteral("/com/quillark/mossbit");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

/// Under this key a request says until when its sender waits.
const QString deadlineKey = QStringLiteral("com.quillark.mossbit.deadline");

// In milliseconds. A request that is taken before its deadline is answered long before its sender
// gives up.
constexpr int answerLimit = 2000;
constexpr int deadlineAfter = 1000;

/// Milliseconds of a clock that all processes share.
qint64 now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// Where Wayland's desktops leave a program that they start the permission to come to the front,
/// and where Qt looks for it.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";
const QString tokenKey = QStringLiteral("activation-token");
/// The same for desktops that know nothing but start-up notification.
const QString startupIdKey = QStringLiteral("desktop-startup-id");

/// Passes each request on and replies at once: what it leads to may ask the user something.
class Adaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit Adaptor(SessionBus& bus) : QDBusAbstractAdaptor(&bus), m_bus(bus) {}

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the interface's names.
    void Activate(const QVariantMap& platformData) { Open({}, platformData); }

    void Open(const QStringList& uris, const QVariantMap& platformData) {
        // After a long stop of this process, the sender has opened the file itself.
        const QVariant deadline = platformData.value(deadlineKey);
        if (deadline.isValid() && deadline.toLongLong() < now())
            return;
        const QString token =
            platformData.value(tokenKey, platformData.value(startupIdKey)).toString();
        if (!token.isEmpty())
            qputenv(tokenVariable, token.toUtf8());
        QMetaObject::invokeMethod(
            &m_bus, [this, uris] { Q_EMIT m_bus.requested(uris); }, Qt::QueuedConnection);
    }

    /// The application has no actions of its own; like any request, it brings the window up.
    void ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) {
        Open({}, platformData);
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
    // The object is there before the name, because whoever finds the name may call at once.
    new Adaptor(*this);
    bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors);
    if (bus.registerService(busName))
        return Role::first;
    if (handOver(file))
        return Role::handedOver;
    // This copy gets the requests when the owner that did not answer has ended.
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
    call << QVariantMap{{deadlineKey, now() + deadlineAfter},
                        {tokenKey, qEnvironmentVariable(tokenVariable)}};
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, answerLimit);
    return reply.type() == QDBusMessage::ReplyMessage;
}

void SessionBus::leave() {
    // Without waiting for the answer, for what comes next is to save the song.
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    QDBusConnection::sessionBus().send(
        QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus,
                                       QStringLiteral("ReleaseName"))
        << busName);
}

} // namespace mossbit

#include "SessionBus.moc"
