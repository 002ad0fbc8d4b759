#include "Audio/ChipCore.h"

#include "Tests/Audio/PlainRenderer.h"
#include "Tests/Support/RandomSong.h"
#include "Tests/Support/Rendering.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>

namespace mossbit {
namespace {

std::vector<float> rendered(const Project& project, std::size_t frames, double rate = 44100) {
    ChipCore core(compiled(project), rate);
    return rendered(core, frames);
}

bool isSilent(std::span<const float> samples) {
    return std::all_of(samples.begin(), samples.end(), [](float s) { return s == 0; });
}

/// Where the formula has run into denormals after silence, the core may be at zero already.
bool isAsInFormula(float formula, float real) {
    const bool isFlushed = real == 0 && std::abs(formula) < std::numeric_limits<float>::min();
    return isFlushed || std::bit_cast<std::uint32_t>(formula) == std::bit_cast<std::uint32_t>(real);
}

void expectPlainFormula(const Project& project, double rate) {
    const auto pattern = compiled(project);
    const std::vector<float> expected = PlainRenderer(*pattern, rate).render(70'000);
    ChipCore core(pattern, rate);
    EXPECT_TRUE(std::ranges::equal(expected, rendered(core, 70'000), isAsInFormula)) << rate;
}

TEST(ChipCore, EqualsThePlainFormulaOnRandomSongs) {
    std::mt19937 random(1);
    // From rates at which a drum clocks several times a sample, or an attack is over in one, to
    // those at which it hardly ever does.
    for (const double rate : {44100.0, 48000.0, 22050.0, 96000.0, 8000.0, 1000.0, 200.0, 3.0})
        for (int i = 0; i < 5; ++i)
            expectPlainFormula(randomSong(random), rate);
}

TEST(ChipCore, EqualsThePlainFormulaForUnusualPatterns) {
    Project swapped =
        song({.tempo = 300, .bars = 1}).note(69, 0, 4).note(180, 4, 4).on(ChannelKind::noise);
    std::swap(swapped.channels[0], swapped.channels[2]);
    Project few = song({.bars = 1}).note(60, 0, 2).note(61, 3, 2);
    few.channels.resize(1);
    few.channels[0].volume = 150; // Clamped to full scale.
    Project many = song({.bars = 1}).on(ChannelKind::noise).note(2, 0, 1).note(7, 3, 9);
    many.channels.push_back(many.channels[3]);
    Project none;
    none.channels.clear();
    for (const Project& project : {swapped, few, many, none})
        expectPlainFormula(project, 44100);
}

TEST(ChipCore, GivesTheSameSamplesForEverySplitIntoBlocks) {
    std::mt19937 random(2);
    for (int i = 0; i < 6; ++i) {
        const Project project = randomSong(random);
        const std::vector<float> whole = rendered(project, 150'000);
        for (const std::size_t block : {1U, 2U, 3U, 7U, 61U, 1021U, 1024U, 0U}) {
            ChipCore core(compiled(project), 44100);
            std::vector<float> pieces(whole.size());
            for (std::size_t at = 0; at < pieces.size();) {
                const std::size_t wanted = block == 0 ? random() % 300 : block;
                const std::size_t frames = std::min(wanted, pieces.size() - at);
                core.render(std::span(pieces).subspan(at, frames));
                at += frames;
            }
            ASSERT_TRUE(pieces == whole) << "song " << i << " in blocks of " << block;
        }
    }
}

TEST(ChipCore, PublishesTheTickBeingPlayed) {
    ChipCore core(compiled(song({.bars = 1, .loop = true})), 44100);
    core.render({});
    EXPECT_EQ(core.publishedTick(), -1);
    // 5512.5 samples a tick at tempo 120: the second tick starts on frame 5513, the third on 11025.
    using Case = std::pair<int, int>;
    for (const auto& [frames, tick] : {Case{1, 0}, Case{5512, 0}, Case{1, 1}, Case{11025 - 5514, 1},
                                       Case{1, 2}, Case{14 * 5512 + 6, 15}, Case{1, 0}}) {
        rendered(core, static_cast<std::size_t>(frames));
        EXPECT_EQ(core.publishedTick(), tick);
    }
}

TEST(ChipCore, EndsAfterTheLastVoiceHasFaded) {
    // A plain noise of 0.3 s on the last tick: not cut by the end, gone two ticks and a bit later.
    ChipCore core(compiled(song({.bars = 1, .loop = false}).on(ChannelKind::noise).note(3, 15, 1)),
                  44100);
    rendered(core, 16 * 5512 + 8);
    EXPECT_EQ(core.publishedTick(), 15);
    rendered(core, 1);
    EXPECT_EQ(core.publishedTick(), 16);
    EXPECT_FALSE(core.isFinished());
    EXPECT_FALSE(isSilent(rendered(core, 5512)));
    rendered(core, 5512);
    EXPECT_FALSE(core.isFinished());
    rendered(core, 1);
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_TRUE(core.isFinished());
    rendered(core, 80'000);
    EXPECT_TRUE(isSilent(rendered(core, 1000))) << "the filter's tail goes on for ever";
}

TEST(ChipCore, TakesANewPatternAtThePositionItHasReached) {
    for (const bool loops : {true, false}) {
        ChipCore core(compiled(song({.bars = 4}).note(60, 0, 64)), 44100);
        rendered(core, 40 * 5512 + 21);
        ASSERT_EQ(core.publishedTick(), 40);
        core.update(compiled(song({.tempo = 240, .bars = 1, .loop = loops})));
        rendered(core, loops ? 5513 + 2 * 2756 + 1 : 5513);
        EXPECT_EQ(core.publishedTick(), loops ? 2 : 16);
    }
}

TEST(ChipCore, SilenceKeepsThePositionAndRewindDoesNot) {
    ChipCore core(compiled(song({.bars = 1}).note(60, 0, 16)), 44100);
    const std::vector<float> first = rendered(core, 20'000);
    core.silence();
    EXPECT_EQ(core.publishedTick(), -1);
    rendered(core, 40'000);
    EXPECT_EQ(core.publishedTick(), 10);
    EXPECT_TRUE(isSilent(rendered(core, 5000))) << "the note goes on";
    core.rewind();
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_TRUE(rendered(core, 20'000) == first);
}

} // namespace
} // namespace mossbit
