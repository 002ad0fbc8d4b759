#include "UI/PixelCaption.h"

#include "UI/PixelPainter.h"

#include <QFontMetricsF>

#include <cmath>

namespace mossbit {

PixelCaption::PixelCaption(const QString& text, const PixelLabel& label, QWidget* parent)
    : QLabel(text, parent), m_label(label) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PixelCaption::setColor(const QColor& color) {
    if (m_label.color == color)
        return;
    m_label.color = color;
    update();
}

QSize PixelCaption::sizeHint() const {
    return {static_cast<int>(std::ceil(m_label.width(text()))),
            static_cast<int>(std::ceil(QFontMetricsF(m_label.font).height()))};
}

void PixelCaption::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.text(text(), m_label, {0, height() / 2.0});
}

} // namespace mossbit
