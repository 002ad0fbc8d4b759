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

const QColor stepLine = withOpacity(Palette::line, 0.35);
const QColor beatLine = withOpacity(Palette::line, 0.8);
const QColor barLine = withOpacity(Palette::textDim, 0.65);

class PianoRollProbes : public testing::TestWithParam<double> {
protected:
    /// Compares colours at places of the grid: a pitch, ticks from the left, and points from there.
    struct Probe {
        const char* name;
        std::int64_t pitch;
        double tick;
        QPointF shift;
        QColor color;
    };

    static void expectColors(const WindowHarness& window, const std::vector<Probe>& probes) {
        const QImage image = render(window.roll(), GetParam());
        for (const Probe& probe : probes) {
            const QPointF point =
                window.at(probe.pitch, probe.tick) + probe.shift + window.canvas().pos();
            EXPECT_TRUE(isNear(colorAt(image, point), probe.color)) << probe.name;
        }
    }
};

TEST_P(PianoRollProbes, ShowTheGridsLayers) {
    WindowHarness window({}, evenExtent);
    window.view.hint().hide();
    // A quarter of a point into a line is within its first device pixel at any ratio.
    const QPointF in(0.25, 0);
    const QColor onStep = over(Palette::well, stepLine);
    expectColors(
        window,
        {{"white row", 72, 1.5, {}, Palette::well},
         {"black row", 73, 1.5, {}, Palette::background},
         {"separator", 72, 1.5, {0, -7.25}, over(Palette::well, withOpacity(Palette::line, 0.4))},
         {"step", 72, 1, in, onStep},
         {"step on a black row", 73, 1, in, over(Palette::background, stepLine)},
         {"beat", 72, 4, in, over(onStep, beatLine)},
         {"bar", 72, 16, in + QPointF(0, -7),
          over(over(over(over(Palette::well, withOpacity(Palette::line, 0.4)), stepLine), beatLine),
               barLine)},
         {"end", 72, 64, {-0.25, 0}, over(Palette::well, barLine)},
         {"plate", 72, 16, {1.25, 5.5}, Palette::well},
         {"no plate", 71, 16, {1.25, 5.5}, Palette::well}});
}

TEST_P(PianoRollProbes, ShowNotesGhostsAndPlayhead) {
    SongBuilder project = song().note(72, 1, 3).note(72, 6, 3);
    project.on(ChannelKind::wave).muted().note(71, 1, 3);
    project.on(ChannelKind::noise).note(1, 0, 4);
    WindowHarness window(project, evenExtent);
    window.vm->setSelection({window.notes()[1].id});
    window.vm->play();
    window.system.output.pull(48000 / 8 * 9 + 100);
    window.system.pass(0.02);
    ASSERT_EQ(window.vm->playhead(), 9);
    const QColor accent = Palette::accent(ChannelKind::pulse1);
    const QColor ghost = withOpacity(Palette::accent(ChannelKind::wave), 0.2);
    expectColors(
        window,
        {{"note", 72, 2.5, {}, accent},
         {"handle", 72, 4, {-1.25, 0}, over(accent, withOpacity(Palette::background, 0.45))},
         {"before the handle", 72, 4, {-2.75, 0}, accent},
         {"outline", 72, 7.5, {0, -6.9}, Palette::text},
         {"outline's end", 72, 9, {0, 0}, Palette::text},
         {"ghost of a muted channel", 71, 2.5, {}, over(Palette::well, ghost)},
         {"above the ghost", 71, 2.5, {0, -5.75}, Palette::well},
         {"playhead", 70, 9, {1, 0}, over(Palette::background, withOpacity(Palette::text, 0.85))},
         {"past the playhead", 70, 9, {2.25, 0}, Palette::background}});

    window.vm->setSelectedChannelIndex(3);
    const double quarter = window.roll().grid().rowHeight / 4;
    expectColors(window, {{"drum", 1, 2.5, {0, quarter}, Palette::accent(ChannelKind::noise)},
                          {"odd row", 1, 5.5, {0, quarter}, Palette::background},
                          {"no ghosts", 2, 2.5, {0, quarter}, Palette::well}});
}

INSTANTIATE_TEST_SUITE_P(Ratios, PianoRollProbes, testing::Values(1.0, 2.0));

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
    EXPECT_TRUE(isNear(colorAt(before, key(71) + QPointF(0, 7)),
                       over(Palette::panel, withOpacity(Palette::line, 0.35))));
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
        PianoRollPainter(pixels, grid, image.rect()).paint(project, 0, {}, playhead);
        return image;
    };
    EXPECT_EQ(shown(grid.totalTicks), shown(-1));
    EXPECT_NE(shown(grid.totalTicks - 1), shown(-1));
}

} // namespace
} // namespace mossbit
