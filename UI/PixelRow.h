#pragma once

#include <QHBoxLayout>

#include <initializer_list>

namespace mossbit {

/// Widgets side by side, `spacing` points apart. They must have been made in this order, which is
/// the one in which Tab walks them.
class PixelRow : public QHBoxLayout {
public:
    PixelRow(int spacing, std::initializer_list<QWidget*> widgets) {
        setContentsMargins(0, 0, 0, 0);
        setSpacing(spacing);
        for (QWidget* widget : widgets)
            addWidget(widget);
    }
};

} // namespace mossbit
