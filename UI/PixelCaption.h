#pragma once

#include "UI/Theme.h"

#include <QWidget>

namespace mossbit {

/// A line of text in the pixel style.
class PixelCaption : public QWidget {
public:
    PixelCaption(const QString& text, const PixelLabel& label, QWidget* parent = nullptr);

    void setText(const QString& text, const PixelLabel& label);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_text;
    PixelLabel m_label;
};

} // namespace mossbit
