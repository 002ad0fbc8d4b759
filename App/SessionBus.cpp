#include "App/SessionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QGuiApplication>

#include <chrono>

namespace mossbit {

namespace {

const QString busName = QStringLiteral("com.quillark.mossbit");
const QString objectPath = QStringLiteral("/com/quillark/mossbit");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");

/// Under this key a request says until when it may be taken.
const QString deadlineKey = QStringLiteral("com.quillark.mossbit.deadline");

// In milliseconds. The sender waits longer, so that a request taken at the last moment is still
// answered in time.
constexpr int answerLimit = 2000;
constexpr int deadlineAfter = 1000;

/// Milliseconds of a clock that all processes share.
qint64 now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// A desktop's permission to come to the front, which a program finds in this variable when it is
/// started. Qt on Wayland reads it there.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";
const QString tokenKey = QStringLiteral("activation-token");
/// The same for desktops that know nothing but start-up notification.
const QString startupIdKey = QStringLiteral("desktop-startup-id");

} // namespace

void SessionBus::Activate(const QVariantMap& platformData, const QDBusMessage& call) {
    Open({}, platformData, call);
}

void SessionBus::Open(const QStringList& uris, const QVariantMap& platformData,
                      const QDBusMessage& call) {
    // This process did not run for a while: the sender opens the file itself, or already has.
    const QVariant deadline = platformData.value(deadlineKey);
    if (deadline.isValid() && deadline.toLongLong() < now()) {
        call.setDelayedReply(true);
        QDBusConnection::sessionBus().send(
            call.createErrorReply(QDBusError::TimedOut, QStringLiteral("Too late")));
        return;
    }
    const QString token = platformData.value(tokenKey, platformData.value(startupIdKey)).toString();
    // Only where Qt reads it: other threads may be reading the environment, too.
    if (!token.isEmpty() && QGuiApplication::platformName() == QLatin1String("wayland"))
        qputenv(tokenVariable, token.toUtf8());
    Q_EMIT requested(uris);
}

void SessionBus::ActivateAction(const QString&, const QVariantList&,
                                const QVariantMap& platformData, const QDBusMessage& call) {
    Open({}, platformData, call);
}

bool SessionBus::handOverOrJoin(const QString& file) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    // The object is there before the name, because whoever finds the name may call at once.
    bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots);
    if (bus.registerService(busName))
        return false;
    if (handOver(file))
        return true;
    // This copy gets the requests when the owner that did not answer has ended.
    bus.interface()->registerService(busName, QDBusConnectionInterface::QueueService);
    return false;
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
