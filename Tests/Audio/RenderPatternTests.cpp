#include "Audio/RenderPattern.h"

#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace mossbit {
namespace {

TEST(RenderPattern, ClipsNotesToThePattern) {
    struct Case {
        std::int64_t start, length, end;
    };
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    for (const Case& c : {Case{62, 8, 64}, Case{5, 0, 6}, Case{5, -3, 6}, Case{5, largest, 64},
                          Case{-8, 4, -4}, Case{-8, largest, 64}, Case{-largest, largest, 0}}) {
        const RenderPattern pattern(song({.bars = 4}).note(60, c.start, c.length));
        ASSERT_EQ(pattern.channels[0].events.size(), 1U);
        EXPECT_EQ(pattern.channels[0].events[0].start, c.start);
        EXPECT_EQ(pattern.channels[0].events[0].end, c.end);
    }
    const RenderPattern pattern(
        song({.bars = 4}).note(60, 64, 1).note(60, 0, 1, 20).note(60, 1, 1, -3));
    ASSERT_EQ(pattern.channels[0].events.size(), 2U);
    EXPECT_EQ(pattern.channels[0].events[0].velocity, 1);
    EXPECT_EQ(pattern.channels[0].events[1].velocity, 0);
}

TEST(RenderPattern, SortsNotesAndLetsTheLastStoredOneOwnItsTick) {
    const RenderPattern pattern(
        song({.bars = 1}).note(60, 9, 1).note(62, 8, 1).note(63, 8, 2).note(9, -1, 4));
    const RenderChannel& channel = pattern.channels[0];
    EXPECT_TRUE(std::ranges::is_sorted(channel.events, {}, &RenderEvent::start));
    EXPECT_EQ(channel.events[2].pitch, 63);
    EXPECT_EQ(channel.startAtTick, (std::vector<std::int64_t>{-1, -1, -1, -1, -1, -1, -1, -1, 2, 3,
                                                              -1, -1, -1, -1, -1, -1}));
}

} // namespace
} // namespace mossbit
