#include "UI/PixelPainter.h"

#include "Tests/Support/WidgetProbes.h"
#include "UI/PixelIcon.h"

#include <QImage>
#include <QMenu>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <set>

namespace mossbit {
namespace {

/// What `draw` leaves on black when all is moved by `shift`.
QImage drawn(double ratio, const std::function<void(PixelPainter&)>& draw, QPointF shift = {}) {
    QImage image(QSize(40, 40) * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.translate(shift);
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

TEST(PixelPainter, DrawsLinesOfWholePixelsAtAnyRatio) {
    for (const auto& [ratio, thickness] : {std::pair{1.0, 1}, {1.25, 1}, {1.5, 2}, {2.0, 2}}) {
        for (int x = 3; x < 12; ++x) {
            const QImage image = drawn(ratio, [x](PixelPainter& pixels) {
                pixels.pixelBorder(QRectF(x, 5, 20, 20), Qt::white);
            });
            const int middle = static_cast<int>(15 * ratio);
            EXPECT_EQ(litInRow(image, middle), 2 * thickness) << ratio << " at " << x;
        }
    }
}

TEST(PixelPainter, JoinsNeighboursWithoutSeamsOrOverlap) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        const auto neighbours = [](PixelPainter& pixels) {
            for (int i = 0; i < 9; ++i)
                pixels.fill({i * 3.3, 2, 3.3, 30}, QColor(255, 255, 255, 100));
        };
        const QImage image = drawn(ratio, neighbours, {0.3, 0.7});
        const QColor first = image.pixelColor(3, 20);
        for (int x = 3; x < static_cast<int>(29 * ratio); ++x)
            ASSERT_EQ(image.pixelColor(x, 20), first) << ratio << " at " << x;
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
    applyTheme(*qApp);
    QMenu menu;
    QAction* const open = menu.addAction("Open");
    QAction* const missing = menu.addAction("Missing");
    missing->setEnabled(false);
    menu.resize(menu.sizeHint());
    const auto colors = [&](const QAction* item) {
        const QImage image = render(menu, 3);
        std::set<QRgb> found;
        const QRect place = menu.actionGeometry(const_cast<QAction*>(item));
        for (int y = 3 * place.top(); y <= 3 * place.bottom(); ++y)
            for (int x = 3 * place.left(); x <= 3 * place.right(); ++x)
                found.insert(image.pixel(x, y));
        return found;
    };
    EXPECT_TRUE(colors(open).contains(QColor(Palette::text).rgb()));
    EXPECT_TRUE(colors(missing).contains(QColor(Palette::textDim).rgb()));
    menu.setActiveAction(open);
    EXPECT_TRUE(colors(open).contains(menu.palette().color(QPalette::Highlight).rgb()));
}

} // namespace
} // namespace mossbit
