#pragma once

#include "UI/PixelIcon.h"
#include "UI/Theme.h"

#include <QAbstractButton>

namespace mossbit {

class PixelPainter;

/// A framed button that shows an icon, a text, or one after the other. A click leaves the keyboard
/// focus where it is; Tab brings it here, Return presses. Of several choices the checked one is the
/// Tab stop, and the arrow keys lead to the others.
class PixelButton : public QAbstractButton {
public:
    /// Does something, is on or off, or is one of several in its parent.
    enum class Kind { action, toggle, choice };

    struct Look {
        Kind kind = Kind::action;
        /// Face and outline while checked.
        QColor accent = Palette::text;
        /// Points left and right of the content.
        double padding = 5;
        const PixelGlyph::Rows* icon = nullptr;
        /// The content's colour unless checked.
        QColor idleColor = Palette::text;
    };

    /// `name` is what assistive tools call it.
    PixelButton(const Look& look, const QString& name, const QString& toolTip, QWidget* parent);

    /// Another accent, for a control that serves several channels.
    void setAccent(const QColor& accent);

    QSize sizeHint() const override;

    /// Draws all but the focus mark.
    virtual void draw(PixelPainter& pixels, const QRectF& face) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    double contentWidth() const;

    Look m_look;
};

} // namespace mossbit
