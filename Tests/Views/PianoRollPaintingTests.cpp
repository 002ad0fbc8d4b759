#include "Tests/Support/SongBuilder.h"
#include "UI/PixelPainter.h"
#include "Views/PianoRollPainter.h"

#include <QImage>
#include <gtest/gtest.h>

#include <array>

namespace mossbit {
namespace {

TEST(PianoRollPainting, CopiesRowsWithoutAPixelsDifference) {
    const Project project = song({.bars = 4});
    for (const ChannelKind kind : {ChannelKind::pulse1, ChannelKind::noise})
        for (const double ratio : {1.0, 1.25, 1.5, 2.0})
            for (const QPointF scroll : {QPointF(0, 0), QPointF(37, 11), QPointF(900, 700)}) {
                const PianoRollGeometry grid(project, kind, {1000, 401}, 1.3);
                std::array<QImage, 2> images;
                for (QImage& image : images) {
                    image = QImage(QSize(700, 500) * ratio, QImage::Format_RGB32);
                    image.setDevicePixelRatio(ratio);
                    QPainter painter(&image);
                    painter.translate(-scroll);
                    PixelPainter pixels(painter);
                    PianoRollPainter layers(pixels, grid, {{}, image.size()});
                    if (&image == &images[0])
                        layers.emptyGrid();
                    else
                        layers.emptyGridFromTiles();
                }
                EXPECT_EQ(images[0], images[1]) << ratio << " at " << scroll.x();
            }
}

} // namespace
} // namespace mossbit
