#pragma once

#include "UI/FlatButton.h"
#include "UI/Theme.h"

#include <optional>

namespace mossbit {

struct PixelGlyph;

/// A framed push button that shows an icon, a text, or one after the other.
class PixelButton : public FlatButton {
    Q_OBJECT

public:
    struct Look {
        Kind kind = Kind::action;
        /// Face and outline while active.
        QColor accent = Palette::text;
        /// Points left and right of the content.
        double padding = 5;
        const PixelGlyph* icon = nullptr;
        QString text = {};
        /// The content's colour unless active.
        QColor idleColor = Palette::text;
    };

    explicit PixelButton(Look look, QWidget* parent = nullptr);

    /// Another accent, for a control that serves several channels.
    void setAccent(const QColor& accent);
    const QString& label() const { return m_look.text; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double contentWidth() const;

    Look m_look;
};

} // namespace mossbit
