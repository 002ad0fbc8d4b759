#pragma once

#include <QWidget>

namespace mossbit {

/// A rectangle in `Palette::line`: a divider or a rule. 0 for a side lets the layout stretch it.
class PixelRule : public QWidget {
public:
    PixelRule(int width, int height, QWidget* parent = nullptr);

    QSize sizeHint() const override { return m_extent; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const QSize m_extent;
};

} // namespace mossbit
