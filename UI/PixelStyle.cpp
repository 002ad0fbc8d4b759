#include "UI/PixelStyle.h"

#include "UI/PixelPainter.h"
#include "UI/Theme.h"

#include <QStyleOptionSlider>

#include <algorithm>

namespace mossbit {

namespace {

constexpr int shortestThumb = 24;

/// Where the thumb lies in a scroll bar without arrow buttons.
QRect thumbRect(const QStyleOptionSlider& bar) {
    const bool horizontal = bar.orientation == Qt::Horizontal;
    const int length = horizontal ? bar.rect.width() : bar.rect.height();
    const qint64 range = qint64{bar.maximum} - bar.minimum;
    if (range <= 0)
        return bar.rect;
    const qint64 proportional = qint64{length} * bar.pageStep / (range + bar.pageStep);
    const int thumb =
        static_cast<int>(std::clamp<qint64>(proportional, std::min(shortestThumb, length), length));
    const int position = QStyle::sliderPositionFromValue(
        bar.minimum, bar.maximum, bar.sliderPosition, length - thumb, bar.upsideDown);
    return horizontal ? QRect(bar.rect.x() + position, bar.rect.y(), thumb, bar.rect.height())
                      : QRect(bar.rect.x(), bar.rect.y() + position, bar.rect.width(), thumb);
}

void drawScrollBar(const QStyleOptionSlider& bar, QPainter& painter) {
    PixelPainter pixels(painter);
    const bool horizontal = bar.orientation == Qt::Horizontal;
    pixels.fill(bar.rect, Palette::background);
    pixels.edge(bar.rect, horizontal ? Qt::TopEdge : Qt::LeftEdge, Palette::line);
    if (bar.maximum <= bar.minimum)
        return;
    const bool active = (bar.activeSubControls & QStyle::SC_ScrollBarSlider) &&
                        (bar.state & (QStyle::State_MouseOver | QStyle::State_Sunken));
    // Three points of track on either side; one of them, towards the content, is the line.
    const QRect thumb =
        horizontal ? thumbRect(bar).adjusted(2, 4, -2, -3) : thumbRect(bar).adjusted(4, 2, -3, -2);
    pixels.fill(thumb, active ? Palette::textDim : Palette::line);
}

/// Where the lines of the two scroll bars meet.
void drawScrollCorner(const QRect& rect, QPainter& painter) {
    PixelPainter pixels(painter);
    pixels.fill(rect, Palette::background);
    const int line = pixels.thickness(1);
    pixels.fillPixels({pixels.toDevice(rect).topLeft(), QSize(line, line)}, Palette::line);
}

/// The base style ends the menu bar in a line of a colour of its own.
void coverMenuBarRule(const QRect& rect, QPainter& painter) {
    constexpr double height = 2;
    PixelPainter(painter).fill(QRectF(rect).adjusted(0, rect.height() - height, 0, 0),
                               Palette::panel);
}

} // namespace

PixelStyle::PixelStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void PixelStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control == CC_ScrollBar && bar != nullptr)
        drawScrollBar(*bar, *painter);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void PixelStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuBarItem || element == CE_MenuBarEmptyArea) {
        QProxyStyle::drawControl(element, option, painter, widget);
        if (!(option->state & State_Sunken))
            coverMenuBarRule(option->rect, *painter);
        return;
    }
    if (element != CE_MenuItem || item == nullptr ||
        item->menuItemType != QStyleOptionMenuItem::Separator || !item->text.isEmpty()) {
        QProxyStyle::drawControl(element, option, painter, widget);
        return;
    }
    PixelPainter pixels(*painter);
    pixels.edge(QRectF(option->rect).adjusted(0, option->rect.height() / 2.0, 0, 0), Qt::TopEdge,
                Palette::line);
}

void PixelStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case PE_PanelScrollAreaCorner:
        drawScrollCorner(option->rect, *painter);
        return;
    case PE_FrameMenu:
        return;
    case PE_PanelMenu:
    case PE_PanelTipLabel: {
        PixelPainter pixels(*painter);
        pixels.fill(option->rect, Palette::well);
        pixels.pixelBorder(option->rect, Palette::line);
        return;
    }
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

int PixelStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
    switch (metric) {
    case PM_ScrollBarExtent:
        return scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return shortestThumb;
    case PM_MenuPanelWidth:
        // The highlight must not cover the outline.
        return 1;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int PixelStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* returnData) const {
    // Bars that fade away would change the width that sizes the grid.
    if (hint == SH_ScrollBar_Transient)
        return 0;
    // The shadow of disabled text would be the brighter one here.
    if (hint == SH_EtchDisabledText)
        return 0;
    // Their colours are not the palette's.
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons)
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

QRect PixelStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                 SubControl subControl, const QWidget* widget) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || bar == nullptr)
        return QProxyStyle::subControlRect(control, option, subControl, widget);
    const QRect& rect = bar->rect;
    const QRect thumb = thumbRect(*bar);
    const bool horizontal = bar->orientation == Qt::Horizontal;
    switch (subControl) {
    case SC_ScrollBarGroove:
        return rect;
    case SC_ScrollBarSlider:
        return thumb;
    case SC_ScrollBarSubPage:
        return horizontal ? QRect(rect.topLeft(), QPoint(thumb.left() - 1, rect.bottom()))
                          : QRect(rect.topLeft(), QPoint(rect.right(), thumb.top() - 1));
    case SC_ScrollBarAddPage:
        return horizontal ? QRect(QPoint(thumb.right() + 1, rect.top()), rect.bottomRight())
                          : QRect(QPoint(rect.left(), thumb.bottom() + 1), rect.bottomRight());
    default:
        return {};
    }
}

} // namespace mossbit
