#pragma once

#include "Models/Channel.h"

#include <QColor>
#include <QFont>
#include <QString>

class QApplication;

namespace mossbit {

namespace Palette {

/// The darkest surface; also text and icons on a face in an accent colour.
inline constexpr QColor background{16, 19, 28};
/// Raised surfaces: bars, cards, idle buttons.
inline constexpr QColor panel{27, 33, 50};
/// Recessed surfaces: the grid, entry fields.
inline constexpr QColor well{10, 12, 19};
/// Outlines, dividers, unlit cells, hovered buttons.
inline constexpr QColor line{44, 51, 72};
inline constexpr QColor text{232, 239, 248};
inline constexpr QColor textDim{110, 124, 155};

/// The colour of a channel's notes and controls.
QColor accent(ChannelKind kind);

} // namespace Palette

/// `opacity` is 0 … 1.
QColor withOpacity(QColor color, double opacity);

/// A text style.
struct PixelLabel {
    QFont font;
    QColor color;
    /// Points between two characters.
    double tracking = 0;

    double capHeight() const;
    /// Points, without the space after the last character.
    double width(const QString& text) const;
};

/// The usual one: small bold monospaced capitals, set wide. `size` is in points.
PixelLabel pixelLabel(int size, const QColor& color);

/// The system's fixed font, bold, `size` points large.
QFont fixedFont(int size);

/// Gives menus, scroll bars, tooltips and dialogs the same dark look on every desktop.
void applyTheme(QApplication& application);

} // namespace mossbit
