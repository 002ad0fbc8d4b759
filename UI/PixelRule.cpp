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
    // Between device pixels a point may be more than a line.
    pixels.fill(rect(), palette().color(backgroundRole()));
    pixels.edge(rect(), height() == 1 ? Qt::BottomEdge : Qt::LeftEdge, Palette::line);
}

} // namespace mossbit
