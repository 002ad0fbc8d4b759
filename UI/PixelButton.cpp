#include "UI/PixelButton.h"

#include "UI/PixelPainter.h"

#include <QKeyEvent>

#include <cmath>

namespace mossbit {

namespace {

// Points.
constexpr int leastHeight = 24;
constexpr double iconToText = 5;
constexpr int textSize = 10;

} // namespace

PixelButton::PixelButton(const Look& look, const QString& name, const QString& toolTip,
                         QWidget* parent)
    : QAbstractButton(parent), m_look(look) {
    setAccessibleName(name);
    setToolTip(toolTip);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(look.kind == Kind::choice ? Qt::NoFocus : Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCheckable(look.kind != Kind::action);
    setAutoExclusive(look.kind == Kind::choice);
    if (look.kind == Kind::choice)
        connect(this, &QAbstractButton::toggled, this,
                [this](bool on) { setFocusPolicy(on ? Qt::TabFocus : Qt::NoFocus); });
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
    if (m_look.icon && !text().isEmpty())
        width += iconToText;
    return width + pixelLabel(textSize, {}).width(text());
}

QSize PixelButton::sizeHint() const {
    // The icons' 14 points and the text's line both leave room for 5 points above and below.
    return {static_cast<int>(std::ceil(contentWidth() + 2 * m_look.padding)), leastHeight};
}

void PixelButton::draw(PixelPainter& pixels, const QRectF& face) const {
    const bool hovered = underMouse() || isDown();
    pixels.fill(face, isChecked() ? m_look.accent : hovered ? Palette::line : Palette::panel);
    pixels.pixelBorder(face, isChecked() ? m_look.accent : Palette::line);

    const QColor color = isChecked() ? Palette::background : m_look.idleColor;
    double x = face.center().x() - contentWidth() / 2;
    if (m_look.icon) {
        const PixelIcon icon{.glyph = *m_look.icon, .color = color};
        pixels.icon(icon, {x, face.center().y() - icon.extent().height() / 2});
        x += icon.extent().width() + iconToText;
    }
    if (!text().isEmpty())
        pixels.text(text(), pixelLabel(textSize, color), {x, face.center().y()});
}

void PixelButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PixelPainter pixels(painter);
    draw(pixels, rect());
    if (hasFocus())
        paintFocusMark(pixels, rect());
}

void PixelButton::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

} // namespace mossbit
