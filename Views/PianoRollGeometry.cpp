#include "Views/PianoRollGeometry.h"

#include <algorithm>
#include <cmath>

namespace mossbit {

namespace {

constexpr std::int64_t drumRows = std::ssize(allNoiseVoiceKinds);
constexpr std::int64_t pitchRows = PitchRange::highest - PitchRange::lowest + 1;
// Points.
constexpr double pitchRowHeight = 15;
constexpr double minDrumRowHeight = 46;
constexpr double minGridWidth = 200;
constexpr double widestResizeZone = 7;
/// Of a tick.
constexpr double resizeShare = 0.35;

double cellWidthFor(double paneWidth, std::int64_t totalTicks) {
    const double available = std::max(paneWidth - PianoRollGeometry::keyWidth, minGridWidth);
    return std::max(PianoRollGeometry::minCellWidth, available / static_cast<double>(totalTicks));
}

/// The nearest grid step, halves away from zero.
std::int64_t snap(std::int64_t tick, std::int64_t step) {
    return std::llround(static_cast<double>(tick) / static_cast<double>(step)) * step;
}

} // namespace

PianoRollGeometry::PianoRollGeometry(const Project& project, ChannelKind kind, const QSizeF& pane,
                                     double zoom)
    : isNoise(kind == ChannelKind::noise),
      totalTicks(project.totalTicks()),
      gridStep(std::max<std::int64_t>(project.gridStep(), 1)),
      cellWidth(cellWidthFor(pane.width(), totalTicks) * zoom),
      rowHeight(isNoise ? std::max(pane.height() / drumRows, minDrumRowHeight) : pitchRowHeight) {}

std::int64_t PianoRollGeometry::rowCount() const {
    return isNoise ? drumRows : pitchRows;
}

std::int64_t PianoRollGeometry::row(std::int64_t pitch) const {
    return isNoise ? pitch : PitchRange::highest - pitch;
}

std::int64_t PianoRollGeometry::pitch(std::int64_t row) const {
    return isNoise ? row : PitchRange::highest - row;
}

bool PianoRollGeometry::contains(const QPointF& point) const {
    return point.x() >= 0 && point.x() < width() && point.y() >= 0 && point.y() < height();
}

QRectF PianoRollGeometry::noteRect(const Note& note) const {
    const auto ticks = static_cast<double>(std::max<std::int64_t>(note.length, 1));
    return {cellWidth * static_cast<double>(note.start),
            rowHeight * static_cast<double>(row(note.pitch)), cellWidth * ticks, rowHeight};
}

const Note* PianoRollGeometry::noteAt(const QPointF& point, const std::vector<Note>& notes) const {
    const auto found = std::find_if(notes.rbegin(), notes.rend(), [&](const Note& note) {
        const QRectF rect = noteRect(note);
        return rect.left() <= point.x() && point.x() < rect.right() && rect.top() <= point.y() &&
               point.y() < rect.bottom();
    });
    return found == notes.rend() ? nullptr : &*found;
}

bool PianoRollGeometry::isInResizeZone(const Note& note, double x) const {
    return noteRect(note).right() - x <= std::min(widestResizeZone, resizeShare * cellWidth);
}

PianoRollGeometry::Cell PianoRollGeometry::cellAt(const QPointF& point) const {
    return {.pitch = pitch(std::llround(std::floor(point.y() / rowHeight))),
            .tick = std::llround(std::floor(point.x() / cellWidth))};
}

PianoRollGeometry::Cell PianoRollGeometry::moved(const Note& origin,
                                                 const QPointF& distance) const {
    const std::int64_t ticks = std::llround(distance.x() / cellWidth);
    const std::int64_t rows = std::llround(distance.y() / rowHeight);
    const std::int64_t start = std::max<std::int64_t>(snap(origin.start + ticks, gridStep), 0);
    const std::int64_t latest = std::max<std::int64_t>(totalTicks - origin.length, 0);
    return {.pitch = pitch(std::clamp<std::int64_t>(row(origin.pitch) + rows, 0, rowCount() - 1)),
            .tick = std::min(latest, start)};
}

std::int64_t PianoRollGeometry::resizedLength(const Note& origin, double x) const {
    const std::int64_t end = std::llround(x / cellWidth);
    const std::int64_t length = std::max(snap(end - origin.start, gridStep), gridStep);
    return std::max<std::int64_t>(std::min(length, totalTicks - origin.start), 1);
}

} // namespace mossbit
