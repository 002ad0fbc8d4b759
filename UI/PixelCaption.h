#pragma once

#include "UI/Theme.h"

#include <QLabel>

namespace mossbit {

/// A line of text in the pixel style.
class PixelCaption : public QLabel {
public:
    PixelCaption(const QString& text, const PixelLabel& label, QWidget* parent = nullptr);

    void setColor(const QColor& color);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PixelLabel m_label;
};

} // namespace mossbit
