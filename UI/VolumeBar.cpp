#include "UI/VolumeBar.h"

#include "UI/PixelPainter.h"

#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace mossbit {

VolumeBar::VolumeBar(const QColor& accent, int steps, QWidget* parent)
    : QAbstractSlider(parent), m_accent(accent) {
    setOrientation(Qt::Horizontal);
    setRange(0, steps);
    setFocusPolicy(Qt::TabFocus);
}

int VolumeBar::valueAt(double x) const {
    const double cellWidth = std::max(static_cast<double>(width()) / maximum(), 1.0);
    return static_cast<int>(std::clamp(std::ceil(x / cellWidth), 0.0, double(maximum())));
}

void VolumeBar::paintEvent(QPaintEvent*) {
    constexpr double gap = 1;
    QPainter painter(this);
    PixelPainter pixels(painter);
    const double cellWidth = (width() - gap * (maximum() - 1)) / maximum();
    QRect cell = pixels.toDevice(rect());
    for (int i = 0; i < maximum(); ++i) {
        // Each cell begins a gap after the last one's end, so that all gaps are equally wide.
        cell.setRight(pixels.deviceX((i + 1) * cellWidth + i * gap) - 1);
        pixels.fillPixels(cell, i < value() ? m_accent : Palette::line);
        cell.setLeft(cell.right() + 1 + pixels.thickness(gap));
    }
    if (hasFocus())
        paintFocusMark(pixels, rect());
}

void VolumeBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        setValue(valueAt(event->position().x()));
}

void VolumeBar::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        setValue(valueAt(event->position().x()));
}

void VolumeBar::wheelEvent(QWheelEvent* event) {
    // Scrolling past must not change the song.
    event->ignore();
}

} // namespace mossbit
