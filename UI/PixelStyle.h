#pragma once

#include <QProxyStyle>

namespace mossbit {

/// Fusion with flat scroll bars, menus and tooltips. The colours come from `applyTheme`.
class PixelStyle : public QProxyStyle {
    Q_OBJECT

public:
    /// Width of a scroll bar in points.
    static constexpr int scrollBarExtent = 12;

    PixelStyle();

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option,
                       const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                         SubControl subControl, const QWidget* widget) const override;
};

} // namespace mossbit
