#pragma once

#include <QColor>
#include <QWidget>

#include <functional>

namespace mossbit {

/// A row of cells, lit from the left up to a value that the owner keeps. A press or a drag asks
/// for the value under the pointer; with the keyboard the arrow keys ask for one more or less.
class VolumeBar : public QWidget {
    Q_OBJECT

public:
    /// `onChange` gets a value of 0 … `steps`.
    VolumeBar(const QColor& accent, int steps, std::function<void(int)> onChange,
              QWidget* parent = nullptr);

    int value() const { return m_value; }
    int steps() const { return m_steps; }
    void setValue(int value);

    /// Asks the owner for a value; out of range, for the nearest.
    void request(int value);

    /// The value for a press `x` points from the left edge.
    int valueAt(double x) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const QColor m_accent;
    const int m_steps;
    const std::function<void(int)> m_onChange;
    int m_value = 0;
};

} // namespace mossbit
