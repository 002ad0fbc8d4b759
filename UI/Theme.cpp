#include "UI/Theme.h"

#include "UI/PixelStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPalette>
#include <QToolTip>

#include <array>

namespace mossbit {

QColor Palette::accent(ChannelKind kind) {
    static constexpr std::array<QColor, 4> accents = {QColor{242, 212, 92}, QColor{95, 208, 240},
                                                      QColor{169, 139, 245}, QColor{242, 112, 122}};
    return accents[static_cast<std::size_t>(kind)];
}

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QFont fixedFont(int size) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // A point of the window, not of the printer: sizes must not follow the screen's resolution
    // twice.
    font.setPixelSize(size);
    font.setBold(true);
    return font;
}

PixelLabel pixelLabel(int size, const QColor& color) {
    PixelLabel label{.font = fixedFont(size), .color = color, .tracking = 1.2};
    label.font.setLetterSpacing(QFont::AbsoluteSpacing, label.tracking);
    label.font.setCapitalization(QFont::AllUppercase);
    return label;
}

double PixelLabel::capHeight() const {
    // Of a size at which hinting no longer rounds it.
    constexpr int large = 1000;
    static const double share = QFontMetricsF(fixedFont(large)).capHeight() / large;
    return share * font.pixelSize();
}

double PixelLabel::width(const QString& text) const {
    return text.isEmpty() ? 0 : QFontMetricsF(font).horizontalAdvance(text) - tracking;
}

namespace {

QPalette darkPalette() {
    QPalette palette(Palette::text, Palette::panel, Palette::line, Palette::background,
                     Palette::textDim, Palette::text, Palette::text, Palette::well, Palette::panel);
    palette.setColor(QPalette::AlternateBase, Palette::background);
    // Between `line` and `textDim`; the accents stand for channels.
    palette.setColor(QPalette::Highlight, {77, 88, 114});
    palette.setColor(QPalette::HighlightedText, Palette::text);
    palette.setColor(QPalette::Link, Palette::accent(ChannelKind::pulse2));
    palette.setColor(QPalette::LinkVisited, Palette::accent(ChannelKind::wave));
    palette.setColor(QPalette::ToolTipBase, Palette::well);
    palette.setColor(QPalette::ToolTipText, Palette::text);
    palette.setColor(QPalette::PlaceholderText, Palette::textDim);
    palette.setColor(QPalette::Shadow, Palette::well);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, Palette::textDim);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, Palette::line);
    return palette;
}

} // namespace

void applyTheme(QApplication& application) {
    application.setStyle(new PixelStyle);
    const QPalette palette = darkPalette();
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
}

} // namespace mossbit
