#include "UI/PixelRow.h"

#include "UI/PixelCaption.h"

namespace mossbit {

PixelRow::PixelRow(int spacing, QWidget* parent)
    : QWidget(parent), m_layout(new QHBoxLayout(this)) {
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->setSpacing(spacing);
}

void PixelRow::addCaption(const QString& text) {
    add(new PixelCaption(text, pixelLabel(10, Palette::textDim), this));
}

PixelButton* PixelRow::addButton(const PixelButton::Look& look, const QString& name) {
    auto* button = new PixelButton(look, this);
    button->setAccessibleName(name);
    button->setToolTip(name);
    add(button);
    return button;
}

} // namespace mossbit
