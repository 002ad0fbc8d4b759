#pragma once

#include "UI/PixelPainter.h"
#include "Views/PianoRollGeometry.h"

#include <unordered_set>

namespace mossbit {

/// Paints the exposed part of the piano roll's grid. Its cost follows what is exposed.
class PianoRollPainter {
public:
    /// `pixels` works in the grid's points; `exposed` is the part to paint, in device pixels.
    PianoRollPainter(PixelPainter& pixels, const PianoRollGeometry& geometry, const QRect& exposed);

    /// Every layer, from the back to the front. The background is opaque, so that painting twice is
    /// painting once.
    void paint(const Project& project, int channelIndex, const std::unordered_set<Uuid>& selection,
               std::int64_t playheadTick);

private:
    void rowBands();
    void rowSeparators();
    void tickLines(std::int64_t step, const QColor& color);
    void endLine(const QColor& color);
    void ghostNotes(const Project& project, int channelIndex);
    void notes(const Channel& channel, const std::unordered_set<Uuid>& selection);
    void barNumbers();
    void playhead(std::int64_t tick);

    QRectF rowRect(std::int64_t row) const;
    /// A line over the full height of the grid.
    void verticalLine(int x, int width, const QColor& color);
    bool isExposed(const QRectF& rect) const { return rect.intersects(m_exposed); }
    /// The same for a note, without computing its rectangle: most notes of a long song are hidden.
    bool isExposed(const Note& note) const;

    PixelPainter& m_pixels;
    const PianoRollGeometry& m_geometry;
    const QRect m_exposedPixels;
    /// In points, a little larger.
    const QRectF m_exposed;
    /// The part of it that is grid, in device pixels.
    const QRect m_grid;
    const std::int64_t m_firstRow;
    const std::int64_t m_endRow;
    const std::int64_t m_firstTick;
    const std::int64_t m_endTick;
};

} // namespace mossbit
