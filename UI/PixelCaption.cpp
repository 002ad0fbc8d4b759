#include "UI/PixelCaption.h"

#include "UI/PixelAccessibility.h"
#include "UI/PixelPainter.h"

#include <QFontMetricsF>

#include <cmath>

namespace mossbit {

PixelCaption::PixelCaption(const QString& text, const PixelLabel& label, QWidget* parent)
    : QWidget(parent) {
    installPixelAccessibility();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setText(text, label);
}

void PixelCaption::setText(const QString& text, const PixelLabel& label) {
    m_text = text;
    m_label = label;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize PixelCaption::sizeHint() const {
    return {static_cast<int>(std::ceil(m_label.width(m_text))),
            static_cast<int>(std::ceil(QFontMetricsF(m_label.font()).height()))};
}

void PixelCaption::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    pixels.text(m_text, m_label, {0, height() / 2.0});
}

} // namespace mossbit
