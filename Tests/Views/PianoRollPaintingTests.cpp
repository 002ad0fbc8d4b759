#include "Tests/Support/WindowHarness.h"
#include "UI/PixelPainter.h"
#include "Views/PianoRollPainter.h"

#include <QScreen>
#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace mossbit {
namespace {

/// Makes the grid of four bars 1024 points wide: 16 points per tick.
constexpr QSize evenExtent{1024 + 66 + 12, 700};

class PianoRollColors : public testing::TestWithParam<double> {
protected:
    SongBuilder project = song().note(72, 1, 3).note(72, 6, 3);
    std::unique_ptr<WindowHarness> window;
    QImage image;

    void show() { image = render(window->roll(), GetParam()); }

    /// At a place of the grid: a pitch, ticks from the left, and points from there.
    QColor at(std::int64_t pitch, double tick, QPointF shift = {}) const {
        return colorAt(image, window->at(pitch, tick) + shift + window->canvas().pos());
    }
};

TEST_P(PianoRollColors, TellRowsLinesNotesGhostsAndPlayheadApart) {
    project.on(ChannelKind::wave).muted().note(71, 1, 3);
    project.on(ChannelKind::noise).note(1, 0, 4);
    window = std::make_unique<WindowHarness>(project, evenExtent);
    window->vm->setSelection({window->notes()[1].id});
    window->vm->play();
    window->system.output.pull(48000 / 8 * 9 + 100);
    window->system.pass(0.02);
    ASSERT_EQ(window->vm->playhead(), 9);
    show();
    const QColor accent = Palette::accent(ChannelKind::pulse1);
    // A quarter of a point into a line is within its first device pixel at any ratio.
    const QPointF in(0.25, 0);
    EXPECT_EQ(at(76, 1.5), Palette::well) << "white row";
    EXPECT_EQ(at(73, 1.5), Palette::background) << "black row";
    EXPECT_EQ(at(72, 2.5), accent) << "note";
    EXPECT_EQ(at(72, 4, {-2.75, 0}), accent) << "before the handle";
    EXPECT_EQ(at(72, 7.5, {0, -6.9}), Palette::text) << "selected note";
    EXPECT_EQ(at(71, 2.5, {0, -5.75}), Palette::well) << "above the ghost";
    EXPECT_EQ(at(70, 9, {2.25, 0}), Palette::background) << "past the playhead";
    const auto barNumber = [&](std::int64_t pitch) {
        const QPointF place = (window->at(pitch, 16) + window->canvas().pos()) * GetParam();
        return image.copy(QRect(place.toPoint(), QSize(14, 6)));
    };
    EXPECT_NE(barNumber(72), barNumber(71));
    const auto lightness = [&](auto... place) { return at(place...).lightness(); };
    EXPECT_LT(lightness(76, 1.5), lightness(76, 1.5, QPointF(0, -7.25))) << "row separator";
    EXPECT_LT(lightness(76, 1.5), lightness(76, 1, in)) << "step";
    EXPECT_LT(lightness(76, 1, in), lightness(76, 4, in)) << "beat";
    EXPECT_LT(lightness(76, 4, in), lightness(76, 16, in)) << "bar";
    EXPECT_LT(lightness(76, 4, in), lightness(76, 64, QPointF(-0.25, 0))) << "end of the song";
    EXPECT_LT(lightness(72, 4, QPointF(-1.25, 0)), accent.lightness()) << "handle";
    EXPECT_GT(lightness(70, 9, QPointF(1, 0)), lightness(76, 16, in)) << "playhead";
    EXPECT_NE(at(71, 2.5), Palette::well) << "ghost of a muted channel";

    window->vm->setSelectedChannelIndex(3);
    show();
    const QPointF below(0, window->roll().grid().rowHeight / 4);
    EXPECT_EQ(at(1, 2.5, below), Palette::accent(ChannelKind::noise)) << "drum";
    EXPECT_EQ(at(1, 5.5, below), Palette::background) << "odd row";
    EXPECT_EQ(at(2, 2.5, below), Palette::well) << "no ghosts";
}

INSTANTIATE_TEST_SUITE_P(Ratios, PianoRollColors, testing::Values(1.0, 2.0));

TEST(PianoRollPainting, LeavesNothingStaleAfterPartialUpdates) {
    std::mt19937 random(7);
    const auto below = [&](auto end) { return static_cast<int>(random() % unsigned(end)); };
    WindowHarness window({}, {900, 600});
    window.vm->play();
    const auto drag = [&] {
        const QPointF point(below(window.canvas().width()), below(window.canvas().height()));
        window.press(point);
        window.drag(point + QPointF(below(200) - 100, below(200) - 100));
        window.release(point);
    };
    const auto listen = [&] {
        window.system.output.pull(6000);
        window.system.pass(0.02);
    };
    const std::function<void()> changes[] = {
        drag,
        drag,
        listen,
        [&] { window.vm->undo(); },
        [&] { window.vm->selectAll(); },
        [&] { window.vm->setSelectedChannelIndex(below(4)); },
        [&] { window.view.setZoom(1 + below(4) * 0.5); },
        [&] { window.roll().verticalScrollBar()->setValue(below(600)); },
        [&] { window.roll().horizontalScrollBar()->setValue(below(600)); }};
    for (int step = 0; step < 120; ++step) {
        changes[below(std::size(changes))]();
        // What becomes visible is laid out first and painted in the second round.
        QApplication::processEvents();
        QApplication::processEvents();
        const QImage shown = window.view.screen()
                                 ->grabWindow(window.view.winId())
                                 .toImage()
                                 .convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(shown, render(window.view, 1).convertToFormat(QImage::Format_RGB32)) << step;
    }
}

TEST(KeyColumn, NamesTheRowsAndStaysWhileTheGridScrollsSideways) {
    WindowHarness window({}, evenExtent);
    window.view.setZoom(4);
    const auto key = [&](std::int64_t pitch) { return QPointF(20, window.at(pitch, 0).y()); };
    const QImage before = render(window.roll(), 1);
    EXPECT_EQ(colorAt(before, key(72)), Palette::panel);
    EXPECT_EQ(colorAt(before, key(73)), Palette::well);
    EXPECT_EQ(colorAt(before, key(72) + QPointF(45.5, 0)), Palette::line);
    EXPECT_EQ(colorAt(before, key(72) + QPointF(0, 7)), Palette::line);
    EXPECT_NE(colorAt(before, key(71) + QPointF(0, 7)), Palette::panel);
    EXPECT_NE(colorAt(before, key(71) + QPointF(0, 7)), Palette::line);
    window.roll().horizontalScrollBar()->setValue(300);
    const QRect keys(0, 0, 66, window.canvas().height());
    EXPECT_EQ(render(window.roll(), 1).copy(keys), before.copy(keys));
}

TEST(PianoRollPainting, KeepsThePlayheadWithinTheGrid) {
    const Project project;
    const PianoRollGeometry grid(project, ChannelKind::pulse1, {700, 300}, 0.6);
    const auto shown = [&](std::int64_t playhead) {
        QImage image(700, 300, QImage::Format_RGB32);
        QPainter painter(&image);
        PixelPainter pixels(painter);
        paintPianoRoll(pixels, grid, image.rect(), project, 0, {}, playhead);
        return image;
    };
    EXPECT_EQ(shown(grid.totalTicks), shown(-1));
    EXPECT_NE(shown(grid.totalTicks - 1), shown(-1));
}

} // namespace
} // namespace mossbit
