#pragma once

#include <QFrame>

namespace mossbit {

/// A rectangle in `Palette::line`: a divider or a rule. 0 for a side lets the layout stretch it.
/// The background role tells what is above a rule.
class PixelRule : public QFrame {
public:
    PixelRule(int width, int height, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace mossbit
