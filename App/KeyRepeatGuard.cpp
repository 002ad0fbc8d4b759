#include "App/KeyRepeatGuard.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace mossbit {

KeyRepeatGuard::KeyRepeatGuard() {
    QCoreApplication::instance()->installEventFilter(this);
}

bool KeyRepeatGuard::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyRelease && type != QEvent::KeyPress && type != QEvent::ShortcutOverride)
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (type == QEvent::KeyRelease) {
        m_releasedKey = key.nativeScanCode();
        m_releaseTime = key.timestamp();
        return false;
    }
    // A press with the key and time of the last release is a repetition. Events that other programs
    // or tests have made up have no scan code.
    if (key.isAutoRepeat() || key.nativeScanCode() == 0 || key.nativeScanCode() != m_releasedKey ||
        key.timestamp() != m_releaseTime)
        return false;
    // Accepted, so that no shortcut fires: shortcuts do not see the mark set below.
    event->accept();
    if (type == QEvent::KeyPress) {
        QKeyEvent repetition(type, key.key(), key.modifiers(), key.nativeScanCode(),
                             key.nativeVirtualKey(), key.nativeModifiers(), key.text(), true,
                             static_cast<quint16>(key.count()));
        QCoreApplication::sendEvent(watched, &repetition);
    }
    return true;
}

} // namespace mossbit
