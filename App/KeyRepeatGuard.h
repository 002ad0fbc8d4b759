#pragma once

#include <QObject>

namespace mossbit {

/// Marks the repetitions of a held key as what they are. On X11 a repetition is a release and a
/// press, and when the press has not arrived with the release, Qt 6.4 takes it for a new one. The
/// server gives both the same time, which no finger can.
class KeyRepeatGuard : public QObject {
    Q_OBJECT

public:
    /// Watches all events of the application.
    KeyRepeatGuard();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The last release: which key, and the milliseconds of the window system.
    quint32 m_releasedKey = 0;
    quint64 m_releaseTime = 0;
};

} // namespace mossbit
