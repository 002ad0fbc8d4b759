#pragma once

#include "UI/Theme.h"

#include <QPainter>
#include <QTransform>

namespace mossbit {

struct PixelIcon;

/// Takes points and draws on whole device pixels, whatever their ratio: edges are rounded to the
/// nearest pixel, so that shapes which meet leave no seam, and lines are equally thick everywhere.
/// Use the painter itself only through this while it lives.
class PixelPainter {
public:
    explicit PixelPainter(QPainter& painter);
    ~PixelPainter();
    PixelPainter(const PixelPainter&) = delete;
    PixelPainter& operator=(const PixelPainter&) = delete;

    void fill(const QRectF& rect, const QColor& color);

    /// A line along an edge of `rect`, inside it.
    void edge(const QRectF& rect, Qt::Edge edge, const QColor& color, double width = 1);

    /// The four edges of `rect`; the outline lies inside it.
    void pixelBorder(const QRectF& rect, const QColor& color, double width = 1);

    void icon(const PixelIcon& icon, const QPointF& topLeft);

    /// Text with the middle of its capitals at the height of `anchor`, which is its left end, its
    /// centre or its right end.
    void text(const QString& text, const PixelLabel& label, const QPointF& anchor,
              Qt::AlignmentFlag alignment = Qt::AlignLeft);

    /// An outline around `rect` with its middle `growth` points outside, antialiased.
    void smoothOutline(const QRectF& rect, double growth, double width, const QColor& color);

    // Device pixels.

    /// Device pixels per point.
    double ratio() const { return m_toDevice.m22(); }
    /// Whole pixels of a line `points` thick, at least one.
    int thickness(double points) const;
    int deviceX(double x) const;
    int deviceY(double y) const;
    QRect toDevice(const QRectF& rect) const;
    void fillPixels(const QRect& pixels, const QColor& color);
    /// From points to device pixels.
    const QTransform& transform() const { return m_toDevice; }

private:
    QPainter& m_painter;
    /// From points to the painter's window coordinates: its world transform before and after.
    const QTransform m_world;
    /// From points to device pixels.
    const QTransform m_toDevice;
    /// From device pixels to the painter's window coordinates: its world transform meanwhile.
    const QTransform m_pixels;
};

/// Draws the mark of the keyboard focus just inside `rect`.
void paintFocusMark(PixelPainter& pixels, const QRectF& rect);

} // namespace mossbit
