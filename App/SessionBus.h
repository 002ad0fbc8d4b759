#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

namespace mossbit {

/// The application's place on the desktop's message bus: the first copy that starts answers
/// `org.freedesktop.Application` there, later ones hand over to it.
class SessionBus : public QObject {
    Q_OBJECT

public:
    enum class Role {
        /// Requests come to this process.
        first,
        /// Another process has taken the request; this one may end.
        handedOver,
        /// There is no bus, or the first copy does not answer.
        alone
    };

    /// Claims the application's name or hands `file`, an address or empty for none, to its owner.
    /// Waits for the owner two seconds at most.
    Role join(const QString& file);

    /// Gives the name back, so that the next start finds no owner.
    void leave();

Q_SIGNALS:
    /// Another start or the desktop wants the window in front, and a file opened unless `uris` is
    /// empty.
    void requested(const QStringList& uris);

private:
    bool handOver(const QString& file) const;
};

} // namespace mossbit
