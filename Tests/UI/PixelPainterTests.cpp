#include "UI/PixelPainter.h"

#include "UI/PixelIcon.h"

#include <QImage>
#include <gtest/gtest.h>

#include <cstdlib>

namespace mossbit {
namespace {

QImage canvas(double ratio) {
    QImage image(QSize(40, 40) * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::black);
    return image;
}

/// How many pixels of a row or column of pixels are lit.
int litInRow(const QImage& image, int y) {
    int lit = 0;
    for (int x = 0; x < image.width(); ++x)
        lit += image.pixelColor(x, y) == QColor(Qt::white);
    return lit;
}

TEST(PixelPainter, DrawsLinesOfWholePixelsAtAnyRatio) {
    for (const auto& [ratio, thickness] : {std::pair{1.0, 1}, {1.25, 1}, {1.5, 2}, {2.0, 2}}) {
        for (int x = 3; x < 12; ++x) {
            QImage image = canvas(ratio);
            {
                QPainter painter(&image);
                PixelPainter(painter).pixelBorder(QRectF(x, 5, 20, 20), Qt::white);
            }
            const int middle = static_cast<int>(15 * ratio);
            EXPECT_EQ(litInRow(image, middle), 2 * thickness) << ratio << " at " << x;
        }
    }
}

TEST(PixelPainter, JoinsNeighboursWithoutSeamsOrOverlap) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        QImage image = canvas(ratio);
        {
            QPainter painter(&image);
            painter.translate(0.3, 0.7);
            PixelPainter pixels(painter);
            for (int i = 0; i < 9; ++i)
                pixels.fill({i * 3.3, 2, 3.3, 30}, QColor(255, 255, 255, 100));
        }
        const QColor first = image.pixelColor(3, 20);
        for (int x = 3; x < static_cast<int>(29 * ratio); ++x)
            ASSERT_EQ(image.pixelColor(x, 20), first) << ratio << " at " << x;
    }
}

TEST(PixelPainter, DrawsIconsCellByCell) {
    EXPECT_EQ(PixelIcon{PixelGlyph::play}.extent(), QSizeF(8, 14));
    EXPECT_EQ(PixelIcon{PixelGlyph::speaker}.extent(), QSizeF(18, 14));
    QImage image = canvas(2);
    {
        QPainter painter(&image);
        PixelPainter(painter).icon({.glyph = PixelGlyph::play, .color = Qt::white}, {3, 4});
    }
    for (int row = 0; row < 7; ++row)
        EXPECT_EQ(litInRow(image, 8 + 4 * row + 1), 4 * (4 - std::abs(3 - row))) << row;
}

TEST(PixelPainter, CentresCapitals) {
    QImage image = canvas(2);
    {
        QPainter painter(&image);
        PixelPainter(painter).text(QStringLiteral("h"), pixelLabel(15, Qt::white), {20, 20},
                                   Qt::AlignHCenter);
    }
    QRect ink;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) > 60)
                ink |= QRect(x, y, 1, 1);
    EXPECT_NEAR(ink.center().x(), 39.5, 1);
    EXPECT_NEAR(ink.center().y(), 39.5, 1);
    EXPECT_NEAR(ink.height(), 2 * pixelLabel(15, {}).capHeight(), 1);
}

} // namespace
} // namespace mossbit
