#pragma once

#include <QAbstractButton>

namespace mossbit {

class PixelPainter;

/// A button without the platform's bezel. A click leaves the keyboard where it is; Tab brings it
/// here, Return presses. Whether it looks pressed in is up to its owner: a click never changes
/// `isActive`.
class FlatButton : public QAbstractButton {
    Q_OBJECT

public:
    /// What it tells assistive tools: it does something, it is on or off, it is one of several.
    enum class Kind { action, toggle, choice };

    explicit FlatButton(Kind kind, QWidget* parent = nullptr);

    Kind kind() const { return m_kind; }
    bool isHovering() const { return m_hovering; }

    /// Shows it as on or off, chosen or not.
    void setActive(bool active);
    bool isActive() const { return m_isActive; }

    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void nextCheckState() override {}

    /// The mark of the keyboard focus, if it is here.
    void paintFocusMark(PixelPainter& pixels) const;

private:
    const Kind m_kind;
    bool m_isActive = false;
    bool m_hovering = false;
};

/// Draws the mark of the keyboard focus just inside `rect`.
void paintFocusMark(PixelPainter& pixels, const QRectF& rect);

} // namespace mossbit
