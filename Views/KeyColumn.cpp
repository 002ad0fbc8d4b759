#include "Views/KeyColumn.h"

#include "UI/PixelPainter.h"
#include "Views/NoteNames.h"

#include <QHelpEvent>
#include <QPaintEvent>
#include <QToolTip>

namespace mossbit {

namespace {

constexpr int semitoneC = 0;
constexpr int semitoneF = 5;

void paintPitchRow(PixelPainter& pixels, const QRectF& rect, std::int64_t pitch) {
    constexpr double trailingPadding = 6;
    const std::int64_t semitone = pitch % 12;
    pixels.fill(rect, PitchRange::isBlackKey(pitch) ? Palette::well : Palette::panel);
    pixels.edge(rect, Qt::BottomEdge,
                semitone == semitoneC ? Palette::line : withOpacity(Palette::line, 0.35));
    if (semitone == semitoneC || semitone == semitoneF)
        pixels.text(QString::fromStdString(PitchRange::name(pitch)),
                    pixelLabel(9, semitone == semitoneC ? Palette::text : Palette::textDim),
                    {rect.right() - trailingPadding, rect.center().y()}, Qt::AlignRight);
}

void paintDrumRow(PixelPainter& pixels, const QRectF& rect, std::int64_t pitch) {
    constexpr double leadingPadding = 8;
    pixels.fill(rect, Palette::panel);
    pixels.edge(rect, Qt::BottomEdge, Palette::line);
    pixels.text(title(static_cast<NoiseVoiceKind>(pitch)), pixelLabel(10, Palette::text),
                {rect.left() + leadingPadding, rect.center().y()});
}

} // namespace

KeyColumn::KeyColumn(const PianoRollGeometry& geometry, QWidget* parent)
    : QWidget(parent), m_geometry(geometry) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void KeyColumn::setOffset(int offset) {
    const int moved = m_offset - offset;
    m_offset = offset;
    scroll(0, moved);
}

bool KeyColumn::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto& help = *static_cast<QHelpEvent*>(event);
    const QPointF place(0, help.y() + m_offset);
    if (m_geometry.contains(place)) {
        const std::int64_t pitch = m_geometry.cellAt(place).pitch;
        QRectF row = m_geometry.noteRect({.pitch = pitch}).translated(0, -m_offset);
        row.setWidth(width());
        QToolTip::showText(help.globalPos(), pitchName(pitch, m_geometry.isNoise), this,
                           row.toAlignedRect());
    } else {
        QToolTip::hideText();
    }
    return true;
}

void KeyColumn::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.translate(0, -m_offset);
    PixelPainter pixels(painter);
    const QRectF exposed = QRectF(event->rect()).translated(0, m_offset);
    const double width = this->width();
    pixels.fill(exposed, Palette::well);
    for (std::int64_t row = 0; row < m_geometry.rowCount(); ++row) {
        const QRectF rect(0, m_geometry.rowHeight * static_cast<double>(row), width,
                          m_geometry.rowHeight);
        if (!rect.adjusted(0, -1, 0, 1).intersects(exposed))
            continue;
        if (m_geometry.isNoise)
            paintDrumRow(pixels, rect, m_geometry.pitch(row));
        else
            paintPitchRow(pixels, rect, m_geometry.pitch(row));
    }
    pixels.edge({0, 0, width, m_geometry.height()}, Qt::RightEdge, Palette::line);
    pixels.edge({0, m_geometry.height(), width, 1}, Qt::TopEdge, Palette::line);
}

} // namespace mossbit
