#include "UI/PixelRule.h"

#include "UI/PixelPainter.h"

namespace mossbit {

PixelRule::PixelRule(int width, int height, QWidget* parent) : QFrame(parent) {
    if (width > 0)
        setFixedWidth(width);
    if (height > 0)
        setFixedHeight(height);
}

void PixelRule::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    if (height() == 1)
        // All of it: between device pixels it may be more than a line, and less would be a seam.
        pixels.fill(rect(), Palette::line);
    else
        pixels.edge(rect(), Qt::LeftEdge, Palette::line, width());
}

} // namespace mossbit
