#pragma once

#include "UI/PixelButton.h"

#include <functional>
#include <vector>

namespace mossbit {

/// A picker of one of several options in one row. Its owner keeps the choice and knows the options
/// by the order in which they were added.
class PixelSegments : public QWidget {
public:
    /// `name` is what assistive tools call the picker.
    PixelSegments(const QString& name, const QColor& accent, QWidget* parent);

    /// `onChange` is called when the option is chosen, by whatever means.
    void add(const QString& label, const std::function<void()>& onChange);

    void setAccent(const QColor& accent);

    /// Shows that option as chosen; none if there is no such.
    void setSelection(std::ptrdiff_t index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QColor m_accent;
    std::vector<PixelButton*> m_segments;
};

} // namespace mossbit
