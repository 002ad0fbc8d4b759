#include "UI/PixelPainter.h"

#include "Tests/Support/WidgetProbes.h"
#include "UI/PixelIcon.h"

#include <QMenu>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

namespace mossbit {
namespace {

/// What `draw` leaves on black.
QImage drawn(double ratio, const std::function<void(PixelPainter&)>& draw) {
    QImage image(QSize(40, 40) * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    QPainter painter(&image);
    PixelPainter pixels(painter);
    draw(pixels);
    return image;
}

/// How many pixels of a row of pixels are lit.
int litInRow(const QImage& image, int y) {
    int lit = 0;
    for (int x = 0; x < image.width(); ++x)
        lit += image.pixelColor(x, y) == QColor(Qt::white);
    return lit;
}

TEST(PixelPainter, DrawsWholePixelsAtAnyRatio) {
    for (const auto& [ratio, thickness] : {std::pair{1.0, 1}, {1.25, 1}, {1.5, 2}, {2.0, 2}}) {
        for (int x = 3; x < 12; ++x) {
            const QImage border = drawn(ratio, [x](PixelPainter& pixels) {
                pixels.pixelBorder(QRectF(x, 5, 20, 20), Qt::white);
            });
            EXPECT_EQ(litInRow(border, static_cast<int>(15 * ratio)), 2 * thickness) << ratio;
        }
        const QImage neighbours = drawn(ratio, [](PixelPainter& pixels) {
            for (int i = 0; i < 9; ++i)
                pixels.fill({0.3 + i * 3.3, 2, 3.3, 30}, QColor(255, 255, 255, 100));
        });
        for (int x = 3; x < static_cast<int>(29 * ratio); ++x)
            ASSERT_EQ(neighbours.pixel(x, 20), neighbours.pixel(2, 20)) << ratio << " at " << x;
    }
}

TEST(PixelPainter, DrawsIconsCellByCell) {
    const QImage image = drawn(2, [](PixelPainter& pixels) {
        pixels.icon({.glyph = PixelGlyph::play, .color = Qt::white}, {3, 4});
    });
    for (int row = 0; row < 7; ++row)
        EXPECT_EQ(litInRow(image, 8 + 4 * row + 1), 4 * (4 - std::abs(3 - row))) << row;
}

TEST(PixelStyle, PaintsMenuItems) {
    QMenu menu;
    QAction& open = *menu.addAction("Open");
    QAction& missing = *menu.addAction("Missing");
    missing.setEnabled(false);
    menu.resize(menu.sizeHint());
    // A colour among those of an item.
    const auto shows = [&](QAction& item, const QColor& color) {
        const QImage image = render(menu, 1).copy(menu.actionGeometry(&item));
        return image.createMaskFromColor(color.rgb()) != image.createMaskFromColor(0);
    };
    EXPECT_TRUE(shows(open, Palette::text));
    EXPECT_TRUE(shows(missing, Palette::textDim));
    menu.setActiveAction(&open);
    EXPECT_TRUE(shows(open, menu.palette().color(QPalette::Highlight)));
}

} // namespace
} // namespace mossbit
