#include "UI/PixelPainter.h"

#include "Tests/Support/WidgetProbes.h"
#include "UI/PixelIcon.h"
#include "UI/VolumeBar.h"

#include <QImage>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

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

TEST(VolumeBar, LightsCellsFromTheLeft) {
    VolumeBar bar(Qt::white, 15, [](int) {});
    bar.resize(164, 10);
    for (const double ratio : {1.0, 1.25, 2.0})
        for (const int value : {0, 4, 15}) {
            bar.setValue(value);
            const QImage image = render(bar, ratio);
            for (int cell = 0; cell < 15; ++cell)
                EXPECT_EQ(colorAt(image, {cell * 11 + 5.0, 5}),
                          cell < value ? QColor(Qt::white) : QColor(Palette::line));
        }
}

} // namespace
} // namespace mossbit
