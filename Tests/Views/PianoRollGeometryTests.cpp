#include "Views/PianoRollGeometry.h"

#include <gtest/gtest.h>

#include <tuple>

namespace mossbit {
namespace {

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

TEST(PianoRollGeometry, MovesOnTheGridAndStaysInside) {
    const PianoRollGeometry grid({.bars = 1, .grid = GridDivision::quarter}, ChannelKind::pulse1,
                                 {1000, 500}, 1);
    using Case = std::tuple<int, int, double, int>;
    for (const auto& [start, length, ticks, expected] :
         {Case{4, 4, 1.6, 8}, Case{4, 4, 1.4, 4}, Case{3, 2, 0, 4}, Case{4, 4, 99, 12},
          Case{4, 4, -99, 0}, Case{0, 16, 8, 0}, Case{0, 40, 8, 0}}) {
        const Note note{.pitch = 60, .start = start, .length = length};
        EXPECT_EQ(grid.moved(note, {ticks * grid.cellWidth, 0}).tick, expected) << start;
    }
}

TEST(PianoRollGeometry, ResizesInGridStepsUpToTheEnd) {
    using enum GridDivision;
    using Case = std::tuple<GridDivision, int, double, int>;
    for (const auto& [division, start, pointer, length] :
         {Case{eighth, 8, 11.2, 4}, Case{eighth, 8, 10.4, 2}, Case{eighth, 8, -3, 2},
          Case{sixteenth, 0, 99, 16}, Case{quarter, 14, 20, 2}, Case{quarter, 15, 0, 1}}) {
        const Project project{.bars = 1, .grid = division};
        const PianoRollGeometry grid(project, ChannelKind::pulse1, {1000, 500}, 1);
        const Note note{.pitch = 60, .start = start};
        EXPECT_EQ(grid.resizedLength(note, pointer * grid.cellWidth), length)
            << start << " to " << pointer;
    }
}

} // namespace
} // namespace mossbit
