#include "UI/VolumeBar.h"

#include "UI/FlatButton.h"
#include "UI/PixelAccessibility.h"
#include "UI/PixelPainter.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace mossbit {

namespace {

// Points.
constexpr int barHeight = 10;
constexpr double gap = 1;

} // namespace

VolumeBar::VolumeBar(const QColor& accent, int steps, std::function<void(int)> onChange,
                     QWidget* parent)
    : QWidget(parent), m_accent(accent), m_steps(steps), m_onChange(std::move(onChange)) {
    installPixelAccessibility();
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void VolumeBar::setValue(int value) {
    if (value == m_value)
        return;
    m_value = value;
    update();
    QAccessibleValueChangeEvent event(this, value);
    QAccessible::updateAccessibility(&event);
}

void VolumeBar::request(int value) {
    m_onChange(std::clamp(value, 0, m_steps));
}

int VolumeBar::valueAt(double x) const {
    const double cellWidth = std::max(static_cast<double>(width()) / m_steps, 1.0);
    return static_cast<int>(std::clamp(std::ceil(x / cellWidth), 0.0, double(m_steps)));
}

QSize VolumeBar::sizeHint() const {
    return {10 * m_steps, barHeight};
}

QSize VolumeBar::minimumSizeHint() const {
    return {m_steps, barHeight};
}

void VolumeBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    const double cellWidth = (width() - gap * (m_steps - 1)) / m_steps;
    QRect cell = pixels.toDevice(rect());
    for (int i = 0; i < m_steps; ++i) {
        // Each cell begins a gap after the last one's end, so that all gaps are equally wide.
        cell.setRight(pixels.deviceX((i + 1) * cellWidth + i * gap) - 1);
        pixels.fillPixels(cell, i < m_value ? m_accent : Palette::line);
        cell.setLeft(cell.right() + 1 + pixels.thickness(gap));
    }
    if (hasFocus())
        paintFocusMark(pixels, rect());
}

void VolumeBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        request(valueAt(event->position().x()));
}

void VolumeBar::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton)
        request(valueAt(event->position().x()));
}

void VolumeBar::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

void VolumeBar::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
        request(m_value - 1);
        break;
    case Qt::Key_Right:
    case Qt::Key_Up:
        request(m_value + 1);
        break;
    case Qt::Key_Home:
        request(0);
        break;
    case Qt::Key_End:
        request(m_steps);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace mossbit
