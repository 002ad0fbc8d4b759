#include "UI/PixelPainter.h"

#include "UI/PixelIcon.h"

#include <algorithm>
#include <cmath>

namespace mossbit {

namespace {

/// The raster engine takes a hundred times longer per pixel to fill translucent rectangles of about
/// 100 rows or more than shorter ones.
constexpr int tallestTranslucentFill = 64;

/// Halves go up on either side of zero: a scrolled picture is rounded like the unscrolled one.
int nearest(double value) {
    return static_cast<int>(std::floor(value + 0.5));
}

} // namespace

PixelPainter::PixelPainter(QPainter& painter)
    : m_painter(painter),
      m_world(painter.worldTransform()),
      m_toDevice(painter.deviceTransform()),
      // Undoes what the painter adds between the world transform and the device.
      m_pixels(m_toDevice.inverted() * m_world) {
    m_painter.setWorldTransform(m_pixels);
}

PixelPainter::~PixelPainter() {
    m_painter.setWorldTransform(m_world);
}

int PixelPainter::thickness(double points) const {
    return std::max(1, nearest(points * ratio()));
}

int PixelPainter::deviceX(double x) const {
    return nearest(x * m_toDevice.m11() + m_toDevice.dx());
}

int PixelPainter::deviceY(double y) const {
    return nearest(y * m_toDevice.m22() + m_toDevice.dy());
}

QRect PixelPainter::toDevice(const QRectF& rect) const {
    const QPoint topLeft(deviceX(rect.left()), deviceY(rect.top()));
    return {topLeft,
            QSize(deviceX(rect.right()), deviceY(rect.bottom())) - QSize(topLeft.x(), topLeft.y())};
}

void PixelPainter::fillPixels(const QRect& pixels, const QColor& color) {
    if (color.alpha() == 255) {
        m_painter.fillRect(pixels, color);
        return;
    }
    for (int y = pixels.top(); y <= pixels.bottom(); y += tallestTranslucentFill)
        m_painter.fillRect(pixels.x(), y, pixels.width(),
                           std::min(tallestTranslucentFill, pixels.bottom() + 1 - y), color);
}

void PixelPainter::fill(const QRectF& rect, const QColor& color) {
    fillPixels(toDevice(rect), color);
}

void PixelPainter::edge(const QRectF& rect, Qt::Edge edge, const QColor& color, double width) {
    const int pixels = thickness(width);
    QRect line = toDevice(rect);
    if (edge == Qt::TopEdge)
        line.setHeight(pixels);
    else if (edge == Qt::BottomEdge)
        line.setTop(line.bottom() + 1 - pixels);
    else if (edge == Qt::LeftEdge)
        line.setWidth(pixels);
    else
        line.setLeft(line.right() + 1 - pixels);
    fillPixels(line, color);
}

void PixelPainter::pixelBorder(const QRectF& rect, const QColor& color, double width) {
    const int pixels = thickness(width);
    const QRect outer = toDevice(rect);
    const QRect inner = outer.adjusted(pixels, pixels, -pixels, -pixels);
    // No pixel twice: the colour may be translucent.
    fillPixels({outer.x(), outer.y(), outer.width(), pixels}, color);
    fillPixels({outer.x(), inner.bottom() + 1, outer.width(), pixels}, color);
    fillPixels({outer.x(), inner.y(), pixels, inner.height()}, color);
    fillPixels({inner.right() + 1, inner.y(), pixels, inner.height()}, color);
}

void PixelPainter::icon(const PixelIcon& icon, const QPointF& topLeft) {
    // Cells are laid out from a pixel's corner, so that an icon looks the same wherever it is.
    const QPoint origin(deviceX(topLeft.x()), deviceY(topLeft.y()));
    const auto cellEdge = [&](std::size_t index) {
        return nearest(static_cast<double>(index) * icon.pixel * ratio());
    };
    for (std::size_t row = 0; row < icon.glyph.size(); ++row)
        for (std::size_t column = 0; column < icon.glyph[row].size(); ++column) {
            if (icon.glyph[row][column] != 'X')
                continue;
            const QPoint cell(cellEdge(column), cellEdge(row));
            const QPoint end(cellEdge(column + 1), cellEdge(row + 1));
            m_painter.fillRect(QRect(origin + cell, origin + end - QPoint(1, 1)), icon.color);
        }
}

void PixelPainter::text(const QString& text, const PixelLabel& label, const QPointF& anchor,
                        Qt::AlignmentFlag alignment) {
    double left = anchor.x();
    if (alignment == Qt::AlignRight)
        left -= label.width(text);
    else if (alignment == Qt::AlignHCenter)
        left -= label.width(text) / 2;
    const QPointF origin(deviceX(left), deviceY(anchor.y() + label.capHeight() / 2));
    m_painter.setWorldTransform(m_world);
    m_painter.setFont(label.font);
    m_painter.setPen(label.color);
    m_painter.drawText(m_toDevice.inverted().map(origin), text);
    m_painter.setWorldTransform(m_pixels);
}

void PixelPainter::smoothOutline(const QRectF& rect, double growth, double width,
                                 const QColor& color) {
    const double grown = growth * ratio();
    const QRectF middle = QRectF(toDevice(rect)).adjusted(-grown, -grown, grown, grown);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setPen(QPen(color, width * ratio(), Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    m_painter.drawRect(middle);
    m_painter.setRenderHint(QPainter::Antialiasing, false);
}

void paintFocusMark(PixelPainter& pixels, const QRectF& rect) {
    // The dark line within keeps the light one visible on an accent face.
    pixels.pixelBorder(rect, Palette::text);
    pixels.pixelBorder(rect.adjusted(1, 1, -1, -1), Palette::background);
}

} // namespace mossbit
