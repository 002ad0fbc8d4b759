#include "Views/PianoRollPainter.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cmath>

namespace mossbit {

namespace {

constexpr std::int64_t rowsPerOctave = 12;
/// Lines reach past the exposed part at most this far, in points.
constexpr double reach = 2;
/// Device pixels. Lower parts are quicker painted than copied.
constexpr int lowestTiled = 64;
constexpr int tallestTile = 64;

std::int64_t rowAt(double y, const PianoRollGeometry& geometry) {
    const auto row = static_cast<std::int64_t>(std::floor(y / geometry.rowHeight));
    return std::clamp<std::int64_t>(row, 0, geometry.rowCount() - 1);
}

} // namespace

PianoRollPainter::PianoRollPainter(PixelPainter& pixels, const PianoRollGeometry& geometry,
                                   const QRect& exposed)
    : m_pixels(pixels),
      m_geometry(geometry),
      m_exposedPixels(exposed),
      m_exposed(pixels.transform()
                    .inverted()
                    .mapRect(QRectF(exposed))
                    .adjusted(-reach, -reach, reach, reach)),
      m_grid(exposed & pixels.toDevice({0, 0, geometry.width(), geometry.height()})),
      m_firstRow(rowAt(m_exposed.top(), geometry)),
      m_endRow(rowAt(m_exposed.bottom(), geometry) + 1),
      m_firstTick(static_cast<std::int64_t>(std::floor(m_exposed.left() / geometry.cellWidth))),
      m_endTick(static_cast<std::int64_t>(std::ceil(m_exposed.right() / geometry.cellWidth))) {}

bool PianoRollPainter::isExposed(const Note& note) const {
    const std::int64_t row = m_geometry.row(note.pitch);
    return note.start < m_endTick &&
           note.start + std::max<std::int64_t>(note.length, 1) > m_firstTick && row >= m_firstRow &&
           row < m_endRow;
}

void PianoRollPainter::paintAll(const Project& project, int channelIndex,
                                const std::unordered_set<Uuid>& selection,
                                std::int64_t playheadTick) {
    if (m_exposedPixels.height() < lowestTiled)
        emptyGrid();
    else
        emptyGridFromTiles();
    ghostNotes(project, channelIndex);
    notes(project.channels[static_cast<std::size_t>(channelIndex)], selection);
    barNumbers();
    playhead(playheadTick);
}

void PianoRollPainter::emptyGrid() {
    background();
    rowBands();
    rowSeparators();
    gridStepLines();
    beatLines();
    barLines();
}

void PianoRollPainter::background() {
    m_pixels.fillPixels(m_exposedPixels, Palette::well);
}

bool PianoRollPainter::isBand(std::int64_t row) const {
    return m_geometry.isNoise ? row % 2 == 1 : PitchRange::isBlackKey(m_geometry.pitch(row));
}

QRect PianoRollPainter::rowPixels(std::int64_t row) const {
    const int top = m_pixels.deviceY(m_geometry.rowHeight * static_cast<double>(row));
    const int end = m_pixels.deviceY(m_geometry.rowHeight * static_cast<double>(row + 1));
    return {m_grid.x(), top, m_grid.width(), end - top};
}

void PianoRollPainter::rowBands() {
    for (std::int64_t row = m_firstRow; row < m_endRow; ++row)
        if (isBand(row))
            m_pixels.fillPixels(rowPixels(row) & m_grid, Palette::background);
}

void PianoRollPainter::rowSeparators() {
    const QColor color = withOpacity(Palette::line, 0.4);
    for (std::int64_t row = std::max<std::int64_t>(m_firstRow, 1); row < m_endRow; ++row) {
        QRect line = rowPixels(row);
        line.setHeight(m_pixels.thickness(1));
        m_pixels.fillPixels(line & m_grid, color);
    }
}

void PianoRollPainter::tickLines(std::int64_t step, const QColor& color) {
    const double distance = m_geometry.cellWidth * static_cast<double>(step);
    const auto first = std::max<std::int64_t>(
        static_cast<std::int64_t>(std::floor(m_exposed.left() / distance)), 0);
    const int width = m_pixels.thickness(1);
    for (std::int64_t tick = first * step; tick < m_geometry.totalTicks; tick += step) {
        const double x = m_geometry.cellWidth * static_cast<double>(tick);
        if (x > m_exposed.right())
            break;
        m_pixels.fillPixels({m_pixels.deviceX(x), m_grid.y(), width, m_grid.height()}, color);
    }
}

void PianoRollPainter::gridStepLines() {
    tickLines(m_geometry.gridStep, withOpacity(Palette::line, 0.35));
}

void PianoRollPainter::beatLines() {
    tickLines(ticksPerBeat, withOpacity(Palette::line, 0.8));
}

void PianoRollPainter::barLines() {
    const QColor color = withOpacity(Palette::textDim, 0.65);
    tickLines(ticksPerBar, color);
    // The pattern's end: the last line lies inside the grid.
    const int width = m_pixels.thickness(1);
    m_pixels.fillPixels(
        {m_pixels.deviceX(m_geometry.width()) - width, m_grid.y(), width, m_grid.height()}, color);
}

QImage PianoRollPainter::rowTile(std::int64_t row) const {
    const QRect pixels = rowPixels(row);
    QImage tile(m_exposedPixels.width(), std::min(pixels.height(), tallestTile),
                QImage::Format_RGB32);
    QPainter painter(&tile);
    painter.setWorldTransform(m_pixels.transform() *
                              QTransform::fromTranslate(-m_exposedPixels.x(), -pixels.y()));
    PixelPainter tilePixels(painter);
    PianoRollPainter(tilePixels, m_geometry, tile.rect()).emptyGrid();
    return tile;
}

void PianoRollPainter::copyRow(const QImage& tile, std::int64_t row) {
    const QRect pixels = rowPixels(row);
    // Only the separator differs from the rows of pixels below it, and the first row has none.
    const int separator = m_pixels.thickness(1);
    int source = row == 0 ? separator : 0;
    for (int y = pixels.top(); y <= pixels.bottom();) {
        const int height = std::min(tile.height() - source, pixels.bottom() + 1 - y);
        m_pixels.devicePainter().drawImage(QPoint(m_exposedPixels.x(), y), tile,
                                           QRect(0, source, tile.width(), height));
        y += height;
        source = separator;
    }
}

void PianoRollPainter::emptyGridFromTiles() {
    if (!m_exposedPixels.intersects(m_grid)) {
        background();
        return;
    }
    if (m_grid.height() < m_exposedPixels.height())
        background();
    std::array<QImage, 2> tiles;
    for (std::int64_t row = m_firstRow; row < m_endRow; ++row) {
        const bool band = isBand(row);
        QImage& tile = tiles[band ? 1 : 0];
        // The first row has no separator, and the octave below shows both kinds of row.
        for (std::int64_t model = std::max<std::int64_t>(row, 1); tile.isNull(); ++model)
            if (isBand(model) == band)
                tile = rowTile(model);
        copyRow(tile, row);
    }
}

void PianoRollPainter::ghostNotes(const Project& project, int channelIndex) {
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

void PianoRollPainter::notes(const Channel& channel, const std::unordered_set<Uuid>& selection) {
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

void PianoRollPainter::barNumbers() {
    const QFont font = fixedFont(9);
    const QColor plate = withOpacity(Palette::well, 0.85);
    const std::int64_t rowStep = m_geometry.isNoise ? m_geometry.rowCount() : rowsPerOctave;
    const double barWidth = m_geometry.cellWidth * ticksPerBar;
    for (std::int64_t bar = 0; bar * ticksPerBar < m_geometry.totalTicks; ++bar) {
        const double x = barWidth * static_cast<double>(bar);
        for (std::int64_t row = 0; row < m_geometry.rowCount(); row += rowStep) {
            const double middle = m_geometry.rowHeight * (static_cast<double>(row) + 0.5);
            const QRectF rect(x + 1, middle - 6, 13, 12);
            if (!isExposed(rect))
                continue;
            m_pixels.fill(rect, plate);
            m_pixels.centredText(QString::number(bar + 1), font, Palette::textDim,
                                 {x + 7.5, middle});
        }
    }
}

void PianoRollPainter::playhead(std::int64_t tick) {
    if (tick < 0)
        return;
    const double x = m_geometry.cellWidth * static_cast<double>(tick);
    const QRect line(m_pixels.deviceX(x), m_grid.y(), m_pixels.thickness(2), m_grid.height());
    // The end of the song is the grid's: nothing shows beside it.
    m_pixels.fillPixels(line & m_grid, withOpacity(Palette::text, 0.85));
}

} // namespace mossbit
