#include "Tests/Support/WidgetProbes.h"
#include "UI/PixelSegments.h"
#include "UI/VolumeBar.h"

#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(PixelButton, ShowsItsStateOnItsFace) {
    PixelButton button({.accent = Palette::accent(ChannelKind::wave), .text = "Loop"});
    button.resize(button.sizeHint());
    EXPECT_EQ(button.height(), 24);
    const auto face = [&] { return colorAt(render(button, 1), {3, 3}); };
    const auto outline = [&] { return colorAt(render(button, 1), {0, 3}); };
    EXPECT_EQ(face(), Palette::panel);
    EXPECT_EQ(outline(), Palette::line);
    QEnterEvent enter({3, 3}, {3, 3}, {3, 3});
    QApplication::sendEvent(&button, &enter);
    EXPECT_EQ(face(), Palette::line);
    button.setActive(true);
    EXPECT_EQ(face(), Palette::accent(ChannelKind::wave));
    EXPECT_EQ(outline(), Palette::accent(ChannelKind::wave));
    QEvent leave(QEvent::Leave);
    button.setActive(false);
    QApplication::sendEvent(&button, &leave);
    EXPECT_EQ(face(), Palette::panel);
    int clicks = 0;
    QObject::connect(&button, &QAbstractButton::clicked, [&] { ++clicks; });
    click(button, {3, 3});
    QTest::keyClick(&button, Qt::Key_Enter);
    EXPECT_EQ(clicks, 2);
    EXPECT_FALSE(button.isActive()) << "only its owner changes that";
}

TEST(PixelSegments, ReportsEveryClickAndShowsTheOwnersValue) {
    std::vector<int> clicked;
    PixelSegments<int> segments("Bars", {{1, "1"}, {2, "2"}, {4, "4"}}, Palette::text,
                                [&](int option) { clicked.push_back(option); });
    segments.resize(segments.sizeHint());
    segments.show();
    segments.setSelection(2);
    click(segments.segment(1), {3, 3});
    click(segments.segment(2), {3, 3});
    EXPECT_EQ(clicked, (std::vector<int>{2, 4}));
    EXPECT_TRUE(segments.segment(1).isActive());
    EXPECT_EQ(segments.segment(1).x(), segments.segment(0).geometry().right());
    const double edge = segments.segment(1).x();
    EXPECT_EQ(colorAt(render(segments, 1), {edge, 10}), Palette::text) << "above its neighbour";
    segments.setSelection(3);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_FALSE(segments.segment(i).isActive());
}

TEST(VolumeBar, MapsPointsToSteps) {
    VolumeBar bar(Qt::white, 15, [](int) {});
    bar.resize(150, 10);
    for (const auto& [x, value] :
         {std::pair{0.0, 0}, {0.5, 1}, {10.0, 1}, {10.01, 2}, {150.0, 15}, {900.0, 15}, {-20.0, 0}})
        EXPECT_EQ(bar.valueAt(x), value) << x;
    bar.resize(8, 10);
    EXPECT_EQ(bar.valueAt(7.5), 8);
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
