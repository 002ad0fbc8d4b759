#pragma once

#include <Qt>

namespace mossbit {

/// Whether who loses the keyboard for that reason gets it back: it is only lent, to a menu or to
/// another program.
inline bool isKeyboardLent(Qt::FocusReason reason) {
    return reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason ||
           reason == Qt::ActiveWindowFocusReason;
}

/// Whether Tab brought the keyboard, so that its place must be shown.
inline bool isByKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
}

} // namespace mossbit
