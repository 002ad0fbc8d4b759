#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QDBusMessage;

namespace mossbit {

/// The application's place on the desktop's message bus: the first copy that starts answers
/// `org.freedesktop.Application` there, later ones hand over to it.
class SessionBus : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    /// Claims the application's name or hands `file`, an address or empty for none, to its owner.
    /// Returns whether the owner has taken it, so that this process may end: not without a bus, and
    /// not if the owner does not answer within two seconds.
    bool handOverOrJoin(const QString& file);

    /// Gives the name back, so that the next start finds no owner.
    void leave();

Q_SIGNALS:
    /// Another start or the desktop wants the window in front, and a file opened unless `uris` is
    /// empty. What that leads to may ask the user something; the reply is not to wait for it.
    void requested(const QStringList& uris);

public Q_SLOTS:
    // Called over the bus. NOLINTBEGIN(readability-identifier-naming): the interface's names.
    void Activate(const QVariantMap& platformData, const QDBusMessage& call);
    void Open(const QStringList& uris, const QVariantMap& platformData, const QDBusMessage& call);
    /// The application has no actions of its own; like any request, it brings the window up.
    void ActivateAction(const QString& name, const QVariantList& parameters,
                        const QVariantMap& platformData, const QDBusMessage& call);
    // NOLINTEND(readability-identifier-naming)

private:
    bool handOver(const QString& file) const;
};

} // namespace mossbit
