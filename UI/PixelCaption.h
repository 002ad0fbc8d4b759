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
