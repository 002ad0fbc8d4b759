#pragma once

#include "UI/PixelButton.h"

#include <functional>
#include <vector>

namespace mossbit {

/// The buttons of a segmented picker in one row. Use `PixelSegments`.
class PixelSegmentRow : public QWidget {
public:
    void setAccent(const QColor& accent);

protected:
    /// `name` is what assistive tools call the picker.
    PixelSegmentRow(const QString& name, const QColor& accent, QWidget* parent);

    PixelButton& add(const QString& label);
    PixelButton& segment(std::size_t index) const { return *m_segments[index]; }

    void paintEvent(QPaintEvent* event) override;

private:
    const QColor m_accent;
    std::vector<PixelButton*> m_segments;
};

/// A picker of one of several values, which its owner keeps.
template <typename Option>
class PixelSegments : public PixelSegmentRow {
public:
    /// `onChange` gets the option whose segment is chosen, by whatever means.
    template <typename Options, typename Label>
    PixelSegments(const QString& name, const Options& options, Label label, const QColor& accent,
                  const std::function<void(Option)>& onChange, QWidget* parent = nullptr)
        : PixelSegmentRow(name, accent, parent), m_options(std::begin(options), std::end(options)) {
        for (const Option& option : options)
            connect(&add(label(option)), &QAbstractButton::toggled, this, [=](bool on) {
                if (on)
                    onChange(option);
            });
    }

    /// Shows that option as chosen; none if it is not among the options.
    void setSelection(const Option& selection) {
        for (std::size_t i = 0; i < m_options.size(); ++i) {
            // Otherwise Qt would keep one checked in any case.
            segment(i).setAutoExclusive(false);
            segment(i).setChecked(m_options[i] == selection);
            segment(i).setAutoExclusive(true);
        }
    }

private:
    const std::vector<Option> m_options;
};

} // namespace mossbit
