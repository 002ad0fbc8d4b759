#pragma once

#include "UI/PixelButton.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace mossbit {

/// The buttons of a segmented picker in one row. Use `PixelSegments`.
class PixelSegmentRow : public QWidget {
    Q_OBJECT

public:
    /// `name` is what assistive tools call the picker.
    PixelSegmentRow(const QString& name, const std::vector<QString>& labels, const QColor& accent,
                    QWidget* parent = nullptr);

    void setAccent(const QColor& accent);
    PixelButton& segment(std::size_t index) const { return *m_segments[index]; }
    std::size_t segmentCount() const { return m_segments.size(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    void clicked(std::size_t index);

protected:
    /// Shows that segment as chosen; none for an index past the last.
    void showSelected(std::size_t index);
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void stack();

    std::vector<PixelButton*> m_segments;
};

/// A picker of one of several values, which its owner keeps.
template <typename Option>
class PixelSegments : public PixelSegmentRow {
public:
    struct Choice {
        Option option;
        QString label;
    };

    /// A choice for each of `options`, with the text that `label` gives it.
    template <typename Options, typename Label>
    static std::vector<Choice> choices(const Options& options, Label label) {
        std::vector<Choice> result;
        result.reserve(std::size(options));
        for (const Option& option : options)
            result.push_back({option, label(option)});
        return result;
    }

    /// `onClick` gets the option of every clicked segment, the selected one's too.
    PixelSegments(const QString& name, const std::vector<Choice>& choices, const QColor& accent,
                  std::function<void(Option)> onClick, QWidget* parent = nullptr)
        : PixelSegmentRow(name, labels(choices), accent, parent), m_choices(choices) {
        connect(this, &PixelSegmentRow::clicked, this,
                [this, onClick = std::move(onClick)](std::size_t index) {
                    onClick(m_choices[index].option);
                });
    }

    void setSelection(const Option& selection) {
        const auto found = std::find_if(m_choices.begin(), m_choices.end(),
                                        [&](const Choice& c) { return c.option == selection; });
        showSelected(static_cast<std::size_t>(found - m_choices.begin()));
    }

private:
    static std::vector<QString> labels(const std::vector<Choice>& choices) {
        std::vector<QString> result;
        result.reserve(choices.size());
        for (const Choice& choice : choices)
            result.push_back(choice.label);
        return result;
    }

    std::vector<Choice> m_choices;
};

} // namespace mossbit
