#pragma once

#include <QColor>
#include <QSizeF>

#include <array>
#include <string_view>

namespace mossbit {

/// The icon bitmaps of the program, from the top row down; "X" is a lit cell.
namespace PixelGlyph {

using Rows = std::array<std::string_view, 7>;

// clang-format off
inline constexpr Rows speaker = {
    "....X....",
    "...XX.X..",
    "XXXXX.X.X",
    "XXXXX.X.X",
    "XXXXX.X.X",
    "...XX.X..",
    "....X....",
};

inline constexpr Rows mute = {
    "....X....",
    "...XX....",
    "XXXXX.X.X",
    "XXXXX..X.",
    "XXXXX.X.X",
    "...XX....",
    "....X....",
};

inline constexpr Rows plus = {
    "...X...",
    "...X...",
    "...X...",
    "XXXXXXX",
    "...X...",
    "...X...",
    "...X...",
};

inline constexpr Rows minus = {
    ".......",
    ".......",
    ".......",
    "XXXXXXX",
    ".......",
    ".......",
    ".......",
};

inline constexpr Rows loop = {
    ".XXXXX.",
    "XX...XX",
    "X.....X",
    "X.....X",
    "X.....X",
    "XX...XX",
    ".XXXXX.",
};

inline constexpr Rows stop = {
    ".......",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".XXXXX.",
    ".......",
};

inline constexpr Rows play = {
    "X...",
    "XX..",
    "XXX.",
    "XXXX",
    "XXX.",
    "XX..",
    "X...",
};
// clang-format on

} // namespace PixelGlyph

/// A bitmap as it is drawn.
struct PixelIcon {
    const PixelGlyph::Rows& glyph;
    /// Edge length of a cell in points.
    double pixel = 2;
    QColor color = {};

    /// Points.
    QSizeF extent() const {
        return QSizeF(static_cast<double>(glyph.front().size()),
                      static_cast<double>(glyph.size())) *
               pixel;
    }
};

} // namespace mossbit
