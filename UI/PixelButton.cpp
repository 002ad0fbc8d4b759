#include "UI/PixelButton.h"

#include "UI/PixelIcon.h"
#include "UI/PixelPainter.h"

#include <cmath>

namespace mossbit {

namespace {

// Points.
constexpr int leastHeight = 24;

constexpr double iconToText = 5;
constexpr int textSize = 10;

} // namespace

PixelButton::PixelButton(Look look, QWidget* parent)
    : FlatButton(look.kind, parent), m_look(std::move(look)) {
    setAccessibleName(m_look.text);
}

void PixelButton::setAccent(const QColor& accent) {
    if (m_look.accent == accent)
        return;
    m_look.accent = accent;
    update();
}

double PixelButton::contentWidth() const {
    double width = 0;
    if (m_look.icon)
        width += PixelIcon{*m_look.icon}.extent().width();
    if (m_look.icon && !m_look.text.isEmpty())
        width += iconToText;
    return width + pixelLabel(textSize, {}).width(m_look.text);
}

QSize PixelButton::sizeHint() const {
    // The icons' 14 points and the text's line both leave room for 5 points above and below.
    return {static_cast<int>(std::ceil(contentWidth() + 2 * m_look.padding)), leastHeight};
}

void PixelButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    const QRectF face = rect();
    const bool hovered = isHovering() || isDown();
    pixels.fill(face, isActive() ? m_look.accent : hovered ? Palette::line : Palette::panel);
    pixels.pixelBorder(face, isActive() ? m_look.accent : Palette::line);

    const QColor color = isActive() ? Palette::background : m_look.idleColor;
    double x = face.center().x() - contentWidth() / 2;
    if (m_look.icon) {
        const PixelIcon icon{.glyph = *m_look.icon, .color = color};
        pixels.icon(icon, {x, face.center().y() - icon.extent().height() / 2});
        x += icon.extent().width() + iconToText;
    }
    if (!m_look.text.isEmpty())
        pixels.text(m_look.text, pixelLabel(textSize, color), {x, face.center().y()});
    paintFocusMark(pixels);
}

} // namespace mossbit
