#include "UI/FlatButton.h"

#include "UI/PixelAccessibility.h"
#include "UI/PixelPainter.h"

#include <QAccessible>
#include <QKeyEvent>

namespace mossbit {

FlatButton::FlatButton(Kind kind, QWidget* parent) : QAbstractButton(parent), m_kind(kind) {
    installPixelAccessibility();
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCheckable(kind != Kind::action);
}

void FlatButton::setActive(bool active) {
    if (active == m_isActive)
        return;
    m_isActive = active;
    if (m_kind != Kind::action) {
        // Announces itself.
        setChecked(active);
        return;
    }
    update();
    QAccessible::State changed;
    changed.pressed = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void FlatButton::enterEvent(QEnterEvent* event) {
    m_hovering = true;
    update();
    QAbstractButton::enterEvent(event);
}

void FlatButton::leaveEvent(QEvent* event) {
    m_hovering = false;
    update();
    QAbstractButton::leaveEvent(event);
}

void FlatButton::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void FlatButton::paintFocusMark(PixelPainter& pixels) const {
    if (hasFocus())
        mossbit::paintFocusMark(pixels, rect());
}

void paintFocusMark(PixelPainter& pixels, const QRectF& rect) {
    // The dark line within keeps the light one visible on an accent face.
    pixels.pixelBorder(rect, Palette::text);
    pixels.pixelBorder(rect.adjusted(1, 1, -1, -1), Palette::background);
}

} // namespace mossbit
