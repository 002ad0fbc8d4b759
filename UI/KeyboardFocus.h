#pragma once

#include <Qt>

namespace mossbit {

/// Whether who loses the keyboard for that reason gets it back: it is only lent, to a menu or to
/// another program.
inline bool isKeyboardLent(Qt::FocusReason reason) {
    return reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason ||
           reason == Qt::ActiveWindowFocusReason;
}

} // namespace mossbit
