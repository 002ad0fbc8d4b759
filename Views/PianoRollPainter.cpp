#include "Views/PianoRollPainter.h"

#include <algorithm>
#include <cmath>

namespace mossbit {

namespace {

constexpr std::int64_t rowsPerOctave = 12;
/// Lines reach past the exposed part at most this far, in points.
constexpr double reach = 2;

std::int64_t rowAt(double y, const PianoRollGeometry& geometry) {
    const auto row = static_cast<std::int64_t>(std::floor(y / geometry.rowHeight));
    return std::clamp<std::int64_t>(row, 0, geometry.rowCount() - 1);
}

/// Paints the layers, each as far as it is exposed.
class PianoRollPainter {
public:
    PianoRollPainter(PixelPainter& pixels, const PianoRollGeometry& geometry, const QRect& exposed)
        : m_pixels(pixels),
          m_geometry(geometry),
          m_exposed(pixels.transform()
                        .inverted()
                        .mapRect(QRectF(exposed))
                        .adjusted(-reach, -reach, reach, reach)),
          m_grid(exposed & pixels.toDevice({0, 0, geometry.width(), geometry.height()})),
          m_firstRow(rowAt(m_exposed.top(), geometry)),
          m_endRow(rowAt(m_exposed.bottom(), geometry) + 1),
          m_firstTick(static_cast<std::int64_t>(std::floor(m_exposed.left() / geometry.cellWidth))),
          m_endTick(static_cast<std::int64_t>(std::ceil(m_exposed.right() / geometry.cellWidth))) {}

    void rows() {
        const QColor separator = withOpacity(Palette::line, 0.4);
        for (std::int64_t row = m_firstRow; row < m_endRow; ++row) {
            const double top = m_geometry.rowHeight * static_cast<double>(row);
            const QRectF rect(0, top, m_geometry.width(), m_geometry.rowHeight);
            if (m_geometry.isNoise ? row % 2 == 1 : PitchRange::isBlackKey(m_geometry.pitch(row)))
                m_pixels.fill(rect, Palette::background);
            if (row > 0)
                m_pixels.edge(rect, Qt::TopEdge, separator);
        }
    }

    void tickLines(std::int64_t step, const QColor& color) {
        // A line at the first tick lies left of what is exposed.
        const std::int64_t first = (m_firstTick + step) / step * step;
        const std::int64_t end = std::min(m_endTick, m_geometry.totalTicks);
        for (std::int64_t tick = first; tick < end; tick += step)
            verticalLine(m_pixels.deviceX(m_geometry.cellWidth * static_cast<double>(tick)),
                         m_pixels.thickness(1), color);
    }

    void endLine(const QColor& color) {
        const int width = m_pixels.thickness(1);
        verticalLine(m_pixels.deviceX(m_geometry.width()) - width, width, color);
    }

    void ghostNotes(const Project& project, int channelIndex) {
        if (m_geometry.isNoise)
            return;
        for (std::size_t i = 0; i < project.channels.size(); ++i) {
            const Channel& channel = project.channels[i];
            if (static_cast<int>(i) == channelIndex || channel.kind == ChannelKind::noise)
                continue;
            const QColor color = withOpacity(Palette::accent(channel.kind), 0.2);
            for (const Note& note : channel.notes)
                if (isExposed(note))
                    m_pixels.fill(m_geometry.noteRect(note).adjusted(0.5, 2, -0.5, -2), color);
        }
    }

    void notes(const Channel& channel, const std::unordered_set<Uuid>& selection) {
        const QColor color = Palette::accent(channel.kind);
        const QColor handle = withOpacity(Palette::background, 0.45);
        for (const Note& note : channel.notes) {
            if (!isExposed(note))
                continue;
            const QRectF rect = m_geometry.noteRect(note).adjusted(0.5, 1, -0.5, -1);
            m_pixels.fill(rect, color);
            m_pixels.edge(rect, Qt::RightEdge, handle, 2);
            if (selection.contains(note.id))
                m_pixels.smoothOutline(rect, 0.5, 1.5, Palette::text);
        }
    }

    void barNumbers() {
        const PixelLabel label{.font = fixedFont(9), .color = Palette::textDim};
        const QColor plate = withOpacity(Palette::well, 0.85);
        const std::int64_t rowStep = m_geometry.isNoise ? m_geometry.rowCount() : rowsPerOctave;
        const double barWidth = m_geometry.cellWidth * ticksPerBar;
        for (std::int64_t bar = 0; bar * ticksPerBar < m_geometry.totalTicks; ++bar) {
            const double x = barWidth * static_cast<double>(bar);
            for (std::int64_t row = 0; row < m_geometry.rowCount(); row += rowStep) {
                const double middle = m_geometry.rowHeight * (static_cast<double>(row) + 0.5);
                const QRectF rect(x + 1, middle - 6, 13, 12);
                if (!rect.intersects(m_exposed))
                    continue;
                // Beside the bar line, which rounding may have made wider than a point.
                QRect pixels = m_pixels.toDevice(rect);
                pixels.setLeft(
                    std::max(pixels.left(), m_pixels.deviceX(x) + m_pixels.thickness(1)));
                m_pixels.fillPixels(pixels, plate);
                m_pixels.text(QString::number(bar + 1), label, {x + 7.5, middle}, Qt::AlignHCenter);
            }
        }
    }

    void playhead(std::int64_t tick) {
        if (tick < 0)
            return;
        const double x = m_geometry.cellWidth * static_cast<double>(tick);
        verticalLine(m_pixels.deviceX(x), m_pixels.thickness(2), withOpacity(Palette::text, 0.85));
    }

private:
    /// A line over the full height of the grid.
    void verticalLine(int x, int width, const QColor& color) {
        m_pixels.fillPixels(QRect(x, m_grid.y(), width, m_grid.height()) & m_grid, color);
    }

    /// Without computing the note's rectangle: most notes of a long song are hidden.
    bool isExposed(const Note& note) const {
        const std::int64_t row = m_geometry.row(note.pitch);
        return note.start < m_endTick &&
               note.start + std::max<std::int64_t>(note.length, 1) > m_firstTick &&
               row >= m_firstRow && row < m_endRow;
    }

    PixelPainter& m_pixels;
    const PianoRollGeometry& m_geometry;
    /// In points, a little larger than what is exposed.
    const QRectF m_exposed;
    /// The exposed part of the grid, in device pixels.
    const QRect m_grid;
    const std::int64_t m_firstRow;
    const std::int64_t m_endRow;
    const std::int64_t m_firstTick;
    const std::int64_t m_endTick;
};

} // namespace

void paintPianoRoll(PixelPainter& pixels, const PianoRollGeometry& geometry, const QRect& exposed,
                    const Project& project, int channelIndex,
                    const std::unordered_set<Uuid>& selection, std::int64_t playheadTick) {
    PianoRollPainter layers(pixels, geometry, exposed);
    const QColor barLine = withOpacity(Palette::textDim, 0.65);
    pixels.fillPixels(exposed, Palette::well);
    layers.rows();
    layers.tickLines(geometry.gridStep, withOpacity(Palette::line, 0.35));
    layers.tickLines(ticksPerBeat, withOpacity(Palette::line, 0.8));
    layers.tickLines(ticksPerBar, barLine);
    layers.endLine(barLine);
    // Below the last row, in a window taller than the grid.
    pixels.edge({0, geometry.height(), geometry.width(), 1}, Qt::TopEdge, Palette::line);
    layers.ghostNotes(project, channelIndex);
    layers.notes(project.channels[static_cast<std::size_t>(channelIndex)], selection);
    layers.barNumbers();
    layers.playhead(playheadTick);
}

} // namespace mossbit
