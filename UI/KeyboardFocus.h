#pragma once

#include <Qt>

namespace mossbit {

/// Whether a widget that loses the keyboard focus for that reason gets it back: a menu or another
/// program has it meanwhile.
inline bool isFocusComingBack(Qt::FocusReason reason) {
    return reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason ||
           reason == Qt::ActiveWindowFocusReason;
}

/// Whether Tab brought the focus, so that its place must be shown.
inline bool isByKeyboard(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason;
}

} // namespace mossbit
