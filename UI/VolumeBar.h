#pragma once

#include <QAbstractSlider>
#include <QColor>

namespace mossbit {

/// A row of cells, lit from the left up to the value. A press or a drag sets the value under the
/// pointer, the arrow keys one more or less.
class VolumeBar : public QAbstractSlider {
public:
    VolumeBar(const QColor& accent, int steps, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    /// The value `x` points from the left edge.
    int valueAt(double x) const;

    const QColor m_accent;
};

} // namespace mossbit
