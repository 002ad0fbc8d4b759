#pragma once

#include "UI/PixelSegments.h"

#include <QHBoxLayout>

namespace mossbit {

/// A row of widgets, as wide as they need. Tab follows the order in which they are added.
class PixelRow : public QWidget {
public:
    /// `spacing` is in points.
    explicit PixelRow(int spacing, QWidget* parent = nullptr);

    void add(QWidget* widget) { m_layout->addWidget(widget); }
    void addCaption(const QString& text);
    /// `name` is what assistive tools call the button, and its tooltip.
    PixelButton* addButton(const PixelButton::Look& look, const QString& name);

    /// Adds a caption and the picker that it names.
    template <typename Option>
    PixelSegments<Option>*
    addSegments(const QString& name,
                const std::vector<typename PixelSegments<Option>::Choice>& choices,
                const QColor& accent, std::function<void(Option)> onClick) {
        addCaption(name);
        auto* segments = new PixelSegments<Option>(name, choices, accent, std::move(onClick), this);
        add(segments);
        return segments;
    }

private:
    QHBoxLayout* m_layout;
};

} // namespace mossbit
