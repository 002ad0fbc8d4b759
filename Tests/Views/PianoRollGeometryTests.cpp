#include "Views/PianoRollGeometry.h"

#include <gtest/gtest.h>

#include <tuple>

namespace mossbit {
namespace {

/// A grid with ticks of that many points.
PianoRollGeometry gridOf(double cellWidth, const Project& project = {.bars = 1},
                         ChannelKind kind = ChannelKind::pulse1) {
    PianoRollGeometry grid(project, kind, {1000, 500}, 1);
    grid.cellWidth = cellWidth;
    return grid;
}

Note note(std::int64_t pitch, std::int64_t start, std::int64_t length) {
    return {.pitch = pitch, .start = start, .length = length};
}

TEST(PianoRollGeometry, FitsThePaneUnlessTicksOrDrumsGetTooNarrow) {
    using Case = std::tuple<int, int, double, double>;
    for (const auto& [bars, paneWidth, zoom, cellWidth] :
         {Case{1, 266, 1.0, 12.5}, Case{1, 100, 1, 12.5}, Case{16, 1000, 1, 9},
          Case{16, 1000, 2, 18}, Case{4, 1090, 0.6, 9.6}}) {
        const QSizeF pane(paneWidth, 500);
        const PianoRollGeometry grid({.bars = bars}, ChannelKind::pulse1, pane, zoom);
        EXPECT_DOUBLE_EQ(grid.cellWidth, cellWidth);
    }
    for (const auto& [paneHeight, rowHeight] : {std::pair{120.0, 46.0}, {400.0, 100.0}}) {
        const PianoRollGeometry drums({}, ChannelKind::noise, {1000, paneHeight}, 1);
        EXPECT_DOUBLE_EQ(drums.rowHeight, rowHeight);
    }
}

TEST(PianoRollGeometry, FindsTheNoteOnTopInItsWholeRectangle) {
    const auto grid = gridOf(10);
    const std::vector notes = {note(96, 2, 4), note(96, 4, 4), note(95, 0, 0)};
    using Case = std::tuple<double, double, int>;
    for (const auto& [x, y, index] :
         {Case{20.0, 0.0, 0}, Case{39.9, 14.9, 0}, Case{40, 7, 1}, Case{79.9, 7, 1},
          Case{80, 7, -1}, Case{19.9, 7, -1}, Case{9.9, 15, 2}, Case{10, 15, -1}}) {
        const Note* found = grid.noteAt({x, y}, notes);
        EXPECT_EQ(found ? found - notes.data() : -1, index) << x << ", " << y;
    }
}

TEST(PianoRollGeometry, ResizesAtTheRightEnd) {
    const Note n = note(60, 0, 2);
    EXPECT_TRUE(gridOf(30).isInResizeZone(n, 60 - 7));
    EXPECT_FALSE(gridOf(30).isInResizeZone(n, 60 - 8));
    EXPECT_TRUE(gridOf(10).isInResizeZone(n, 20 - 3.5));
    EXPECT_FALSE(gridOf(10).isInResizeZone(n, 20 - 3.6));
}

TEST(PianoRollGeometry, TellsTheCellOnlyWithinTheRows) {
    const auto grid = gridOf(10);
    const auto drums = gridOf(10, {.bars = 1}, ChannelKind::noise);
    EXPECT_FALSE(grid.cellAt({5, -0.1}));
    EXPECT_FALSE(grid.cellAt({5, 61 * 15}));
    EXPECT_FALSE(drums.cellAt({5, drums.height()}));
    EXPECT_EQ(drums.cellAt({5, drums.height() - 0.1})->pitch, 3);
    const auto cell = grid.cellAt({25, 20});
    EXPECT_EQ(cell->pitch, 95);
    EXPECT_EQ(cell->tick, 2);
    EXPECT_EQ(grid.cellAt({-1, 20})->tick, 0);
    EXPECT_EQ(grid.cellAt({160, 20})->tick, 15);
}

TEST(PianoRollGeometry, MovesFromTheOriginAndStaysInside) {
    const auto grid = gridOf(10, {.bars = 1, .grid = GridDivision::quarter});
    using Case = std::tuple<Note, double, double, int, int>;
    for (const auto& [origin, ticks, rows, start, pitch] :
         {Case{note(60, 4, 4), 1.6, 0.0, 8, 60}, Case{note(60, 4, 4), 1.4, 0, 4, 60},
          Case{note(60, 3, 2), 0, 0, 4, 60}, Case{note(60, 4, 4), 99, 0, 12, 60},
          Case{note(60, 4, 4), -99, 0, 0, 60}, Case{note(60, 0, 40), 8, 0, 0, 60},
          Case{note(60, 4, 4), 0, -2.4, 4, 62}, Case{note(60, 4, 4), 0, -99, 4, 96},
          Case{note(60, 4, 4), 0, 99, 4, 36}}) {
        const auto to = grid.moved(origin, {ticks * 10, rows * 15});
        EXPECT_EQ(to.tick, start) << ticks;
        EXPECT_EQ(to.pitch, pitch) << rows;
    }
    const auto drums = gridOf(10, {.bars = 1}, ChannelKind::noise);
    EXPECT_EQ(drums.moved(note(1, 0, 1), {0, -9 * drums.rowHeight}).pitch, 0);
    EXPECT_EQ(drums.moved(note(1, 0, 1), {0, 9 * drums.rowHeight}).pitch, 3);
}

TEST(PianoRollGeometry, ResizesInGridStepsUpToTheEnd) {
    using enum GridDivision;
    using Case = std::tuple<GridDivision, int, double, int>;
    for (const auto& [division, start, pointer, length] :
         {Case{eighth, 8, 11.2, 4}, Case{eighth, 8, 10.4, 2}, Case{eighth, 8, -3, 2},
          Case{sixteenth, 0, 5.4, 5}, Case{sixteenth, 0, 99, 16}, Case{quarter, 14, 20, 2},
          Case{quarter, 15, 0, 1}}) {
        const auto grid = gridOf(10, {.bars = 1, .grid = division});
        EXPECT_EQ(grid.resizedLength(note(60, start, 1), pointer * 10), length)
            << start << " to " << pointer;
    }
}

} // namespace
} // namespace mossbit
