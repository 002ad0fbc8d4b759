#pragma once

#include "Models/Project.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cstdint>
#include <vector>

namespace mossbit {

/// Where ticks and pitches lie on the grid, and what a pointer's position means. Lengths are
/// points, the origin is the grid's top left corner.
struct PianoRollGeometry {
    static constexpr double keyWidth = 66;
    static constexpr double minCellWidth = 9;

    /// A place on the grid.
    struct Cell {
        std::int64_t pitch = 0;
        std::int64_t tick = 0;
    };

    /// For the pane, keys included and scroll bars not.
    PianoRollGeometry(const Project& project, ChannelKind kind, const QSizeF& pane, double zoom);

    std::int64_t rowCount() const;
    std::int64_t row(std::int64_t pitch) const;
    std::int64_t pitch(std::int64_t row) const;
    double width() const { return cellWidth * static_cast<double>(totalTicks); }
    double height() const { return rowHeight * static_cast<double>(rowCount()); }
    bool contains(const QPointF& point) const;

    /// The whole rectangle, which answers presses; what is painted is smaller. At least one tick
    /// wide.
    QRectF noteRect(const Note& note) const;

    /// The note on top at that point.
    const Note* noteAt(const QPointF& point, const std::vector<Note>& notes) const;

    /// Whether a press on that note, `x` points from the left, resizes it.
    bool isInResizeZone(const Note& note, double x) const;

    /// The cell at a point of the grid.
    Cell cellAt(const QPointF& point) const;

    /// Where `origin` goes when the pointer moves by `distance`: start and pitch stay inside.
    Cell moved(const Note& origin, const QPointF& distance) const;

    /// The length of `origin` with its end at the pointer's `x`, in grid steps, at least one, and
    /// not past the pattern's end.
    std::int64_t resizedLength(const Note& origin, double x) const;

    bool operator==(const PianoRollGeometry&) const = default;

    bool isNoise;
    std::int64_t totalTicks;
    /// Ticks.
    std::int64_t gridStep;
    /// Points per tick.
    double cellWidth;
    double rowHeight;
};

} // namespace mossbit
