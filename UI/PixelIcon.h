#pragma once

#include <QColor>
#include <QSizeF>

#include <array>
#include <string_view>

namespace mossbit {

/// An icon bitmap of seven rows of equal length; "X" is a lit cell.
struct PixelGlyph {
    std::array<std::string_view, 7> rows;

    /// The bitmaps of the program.
    static const PixelGlyph speaker, mute, plus, minus, loop, stop, play;

    int rowCount() const { return static_cast<int>(rows.size()); }
    int columnCount() const { return static_cast<int>(rows.front().size()); }
    bool isLit(int column, int row) const {
        return rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] == 'X';
    }
};

/// A bitmap as it is drawn.
struct PixelIcon {
    const PixelGlyph& glyph;
    /// Edge length of a cell in points.
    double pixel = 2;
    QColor color = {};

    /// Points.
    QSizeF extent() const { return QSizeF(glyph.columnCount(), glyph.rowCount()) * pixel; }
};

} // namespace mossbit
