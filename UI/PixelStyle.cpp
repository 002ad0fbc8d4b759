#include "UI/PixelStyle.h"

#include "UI/PixelPainter.h"

#include <QApplication>
#include <QIcon>
#include <QImage>
#include <QStyleOptionSlider>

namespace mossbit {

namespace {

constexpr int shortestThumb = 24;

void drawScrollBar(const QStyleOptionSlider& bar, const QRect& thumb, QPainter& painter) {
    PixelPainter pixels(painter);
    pixels.fill(bar.rect, Palette::well);
    if (bar.maximum <= bar.minimum)
        return;
    const bool active = (bar.activeSubControls & QStyle::SC_ScrollBarSlider) &&
                        (bar.state & (QStyle::State_MouseOver | QStyle::State_Sunken));
    const QPoint inset = bar.orientation == Qt::Horizontal ? QPoint(2, 4) : QPoint(4, 2);
    pixels.fill(QRectF(thumb.topLeft() + inset, thumb.bottomRight() + QPoint(1, 1) - inset),
                active ? Palette::text : Palette::textDim);
}

/// The face of a push button or a combo box, as `PixelButton` has it.
void drawFace(const QStyleOption& option, bool isDefault, QPainter& painter) {
    PixelPainter pixels(painter);
    const bool hovered = (option.state & QStyle::State_Enabled) &&
                         (option.state & (QStyle::State_MouseOver | QStyle::State_Sunken));
    const bool focused = option.state & QStyle::State_HasFocus;
    pixels.fill(option.rect, hovered ? Palette::line : Palette::panel);
    pixels.pixelBorder(option.rect, focused     ? Palette::text
                                    : isDefault ? Palette::textDim
                                                : Palette::line);
}

/// The same icon in two flat colours.
QIcon flattened(const QIcon& icon) {
    constexpr int opaque = 128;
    constexpr int bright = 200;
    QIcon flat;
    for (const QSize& size : icon.availableSizes()) {
        QImage image = icon.pixmap(size).toImage().convertToFormat(QImage::Format_ARGB32);
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QRgb pixel = image.pixel(x, y);
                const QColor color = qGray(pixel) < bright ? Palette::textDim : Palette::text;
                image.setPixel(x, y, qAlpha(pixel) < opaque ? 0 : color.rgb());
            }
        flat.addPixmap(QPixmap::fromImage(image));
    }
    return flat;
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
    if (control == CC_ScrollBar && bar != nullptr) {
        drawScrollBar(*bar, subControlRect(control, bar, SC_ScrollBarSlider, widget), *painter);
    } else if (control == CC_ComboBox) {
        drawFace(*option, false, *painter);
        QStyleOption arrow(*option);
        arrow.rect.setLeft(arrow.rect.right() - arrow.rect.height());
        drawPrimitive(PE_IndicatorArrowDown, &arrow, painter, widget);
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

void PixelStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_Splitter)
        return;
    if (element == CE_HeaderSection || element == CE_HeaderEmptyArea) {
        PixelPainter pixels(*painter);
        pixels.fill(option->rect, Palette::panel);
        pixels.edge(option->rect, Qt::RightEdge, Palette::line);
        pixels.edge(option->rect, Qt::BottomEdge, Palette::line);
        return;
    }
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
        painter->fillRect(option->rect, Palette::well);
        return;
    case PE_FrameMenu:
        return;
    case PE_PanelButtonCommand: {
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        drawFace(*option, button && (button->features & QStyleOptionButton::DefaultButton),
                 *painter);
        return;
    }
    case PE_PanelButtonTool:
        if (option->state & State_Enabled && option->state & (State_MouseOver | State_Sunken))
            painter->fillRect(option->rect, Palette::line);
        return;
    case PE_Frame:
    case PE_FrameLineEdit:
        PixelPainter(*painter).pixelBorder(
            option->rect, option->state & State_HasFocus ? Palette::text : Palette::line);
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
        // The highlight must not cover the outline, which is up to 1.5 points wide.
        return 2;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QIcon PixelStyle::standardIcon(StandardPixmap which, const QStyleOption* option,
                               const QWidget* widget) const {
    // A dialog's title and text say what it is about.
    if (which == SP_MessageBoxWarning)
        return QApplication::windowIcon();
    return flattened(QProxyStyle::standardIcon(which, option, widget));
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
    if (subControl == SC_ScrollBarAddLine || subControl == SC_ScrollBarSubLine)
        return {};
    // Longer by the arrow buttons that the base style counts in and this one does not have.
    const QPoint arrow = bar->orientation == Qt::Horizontal ? QPoint(scrollBarExtent, 0)
                                                            : QPoint(0, scrollBarExtent);
    QStyleOptionSlider longer(*bar);
    longer.rect.setBottomRight(longer.rect.bottomRight() + 2 * arrow);
    return QProxyStyle::subControlRect(control, &longer, subControl, widget).translated(-arrow);
}

} // namespace mossbit
