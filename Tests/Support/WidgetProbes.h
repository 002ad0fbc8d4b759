#pragma once

#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

namespace mossbit {

/// What a widget looks like at a ratio of device pixels to points.
inline QImage render(QWidget& widget, double ratio) {
    const QSizeF pixels = QSizeF(widget.size()) * ratio;
    QImage image(static_cast<int>(pixels.width()), static_cast<int>(pixels.height()),
                 QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    widget.render(&image);
    return image;
}

/// The colour at a point of the widget that the image shows.
inline QColor colorAt(const QImage& image, const QPointF& point) {
    const QPointF pixel = point * image.devicePixelRatio();
    return image.pixelColor(static_cast<int>(pixel.x()), static_cast<int>(pixel.y()));
}

/// Sends a press or a movement to a widget, as the window system would.
inline void sendMouse(QWidget& widget, QEvent::Type type, const QPointF& point,
                      Qt::MouseButton button = Qt::LeftButton) {
    QMouseEvent event(type, point, widget.mapToGlobal(point),
                      type == QEvent::MouseMove ? Qt::NoButton : button, button, {});
    QApplication::sendEvent(&widget, &event);
}

inline void turnWheel(QWidget& widget, const QPointF& point, int angle,
                      Qt::MouseButtons buttons = {}, Qt::KeyboardModifiers modifiers = {}) {
    QWheelEvent event(point, widget.mapToGlobal(point), {}, {0, angle}, buttons, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

} // namespace mossbit
