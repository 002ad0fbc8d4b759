#include "Audio/AudioEngine.h"

#include "Tests/Support/Fakes.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <random>
#include <thread>

namespace {

/// Whether this thread is where it must not free memory, nor allocate any that it would then free.
thread_local bool isFreeingForbidden = false;

} // namespace

// Not where clang builds: its sanitizers have allocators of their own.
#ifndef __clang__
// The program's own definitions come before the library's. Inlined, GCC 12 would warn that they do
// not match `new`.
[[gnu::noinline]] void operator delete(void* block) noexcept {
    if (std::exchange(isFreeingForbidden, false))
        ADD_FAILURE() << "memory was freed while rendering";
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}
#endif

namespace mossbit {
namespace {

std::shared_ptr<const RenderPattern> compiled(const Project& project) {
    return std::make_shared<const RenderPattern>(project);
}

/// The core's next samples.
std::vector<float> rendered(ChipCore& core, std::size_t frames) {
    std::vector<float> samples(frames);
    core.render(samples);
    return samples;
}

std::vector<float> rendered(const Project& project, std::size_t frames, double rate = 44100) {
    ChipCore core(compiled(project), rate);
    return rendered(core, frames);
}

const auto silence = [](std::size_t frames) { return std::vector<float>(frames); };

/// A song that a person could have made: every setting within its limits, overlapping notes,
/// muted channels, all drums. The same seed gives the same song on every system.
Project randomSong(std::mt19937& random) {
    // Not std::uniform_int_distribution, which differs between standard libraries.
    const auto below = [&](std::int64_t count) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(count));
    };
    Project project;
    project.tempo = lowestTempo + below(highestTempo - lowestTempo + 1);
    project.bars = allBarCounts[random() % 3];
    project.loop = below(2) == 0;
    for (Channel& channel : project.channels) {
        channel.volume = below(highestVolume + 1);
        channel.muted = below(6) == 0;
        channel.duty = allDuties[random() % 4];
        channel.wave = allWavePresets[random() % 3];
        const bool drums = channel.kind == ChannelKind::noise;
        for (std::int64_t count = below(40); count > 0; --count)
            channel.notes.push_back(
                {.pitch = drums ? below(4) : PitchRange::lowest + below(61),
                 .start = below(project.totalTicks()),
                 .length = 1 + below(9),
                 .velocity = below(4) == 0 ? below(highestVelocity + 1) : highestVelocity});
    }
    return project;
}

/// Single frames go through each voice's own step, longer blocks through the voices side by side.
void expectTheSameInEveryBlockSize(const Project& project, double rate) {
    const std::vector<float> whole = rendered(project, 70'000, rate);
    std::mt19937 random(4);
    for (const bool single : {true, false}) {
        ChipCore core(compiled(project), rate);
        for (std::span<const float> left = whole; !left.empty();) {
            const std::size_t frames =
                std::min<std::size_t>(single ? 1 : random() % 300, left.size());
            ASSERT_TRUE(std::ranges::equal(rendered(core, frames), left.first(frames))) << rate;
            left = left.subspan(frames);
        }
    }
}

TEST(ChipCore, GivesTheSameSamplesForEverySplitIntoBlocks) {
    std::mt19937 random(1);
    // From rates at which a drum clocks several times a sample, or an attack is over in one, to
    // those at which it hardly ever does. 3520 Hz are a multiple of many a note's own frequency.
    for (const double rate : {44100.0, 48000.0, 22050.0, 96000.0, 8000.0, 3520.0, 200.0, 3.0})
        for (int i = 0; i < 4; ++i)
            expectTheSameInEveryBlockSize(randomSong(random), rate);
    Project swapped = song({.bars = 1}).note(69, 0, 4).on(ChannelKind::noise).note(1, 0, 1);
    std::swap(swapped.channels[0], swapped.channels[2]);
    expectTheSameInEveryBlockSize(swapped, 44100);
}

TEST(ChipCore, ClipsWhatIsTooLoud) {
    Project loud = song({.bars = 1}).note(48, 0, 16);
    loud.channels[0].volume = 10 * highestVolume;
    EXPECT_EQ(std::ranges::max(rendered(loud, 44100)), 1);
    expectTheSameInEveryBlockSize(loud, 44100);
}

TEST(ChipCore, GivesTheSamplesOfTheFormulas) {
    // Calculated apart from this code, at a rate where drums clock several times a sample and a
    // high note takes several periods.
    const Project project = song({.tempo = 300, .bars = 1, .loop = true})
                                .note(69, 0, 4)
                                .on(ChannelKind::pulse2)
                                .note(180, 1, 15, 7)
                                .on(ChannelKind::wave)
                                .note(60, 0, 2, 3)
                                .note(36, 5, 1)
                                .on(ChannelKind::noise)
                                .note(0, 0, 1)
                                .note(1, 3, 1)
                                .note(2, 6, 1)
                                .note(3, 8, 1);
    const std::vector<float> samples = rendered(project, 841, 1000);
    using Case = std::pair<std::size_t, float>;
    for (const auto& [frame, expected] :
         {Case{0, -0.133073106F}, Case{2, -0.0252225474F}, Case{50, 0.145264134F},
          Case{200, 0.0140001569F}, Case{310, 0.0412824266F}, Case{410, 0.0374864377F},
          Case{799, -0.0220999308F}, Case{810, -0.00749842357F}, Case{840, 0.227663457F}})
        EXPECT_EQ(samples[frame], expected) << frame;
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
    // One tick a frame at most, even where a frame lasts longer.
    ChipCore slow(compiled(song({.bars = 1})), 3);
    rendered(slow, 10);
    EXPECT_EQ(slow.publishedTick(), 9);
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
    EXPECT_NE(rendered(core, 5512), silence(5512));
    rendered(core, 5512);
    EXPECT_FALSE(core.isFinished());
    rendered(core, 1);
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_TRUE(core.isFinished());
    rendered(core, 80'000);
    EXPECT_EQ(rendered(core, 1000), silence(1000)) << "the filter's tail goes on for ever";
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
    EXPECT_EQ(rendered(core, 5000), silence(5000)) << "the note goes on";
    core.rewind();
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_TRUE(rendered(core, 20'000) == first);
}

TEST(HandOver, ARunningCallDoesNotUndoARewind) {
    auto first = compiled(Project());
    ChipCore core(first, 44100);
    const std::weak_ptr<const RenderPattern> replaced = std::exchange(first, nullptr);
    const auto pattern = compiled(song({.bars = 1, .loop = false}).note(60, 0, 1));
    core.update(pattern);
    std::thread thread([&] { rendered(core, 1'000'000); }); // Past the end of the song.
    // Once the call has given back the first pattern, an order can only be for the next call.
    while (!replaced.expired())
        core.update(pattern);
    core.rewind();
    thread.join();
    EXPECT_EQ(core.publishedTick(), -1);
    EXPECT_FALSE(core.isFinished());

    rendered(core, 20'000);
    EXPECT_EQ(core.publishedTick(), 3);
}

TEST(HandOver, EditsRewindsAndSilencesMeetARenderingThread) {
    std::mt19937 random(3);
    ChipCore core(compiled(randomSong(random)), 44100);
    std::atomic<bool> isOver = false;
    // As an audio device does, but faster.
    std::thread audio([&] {
        for (std::vector<float> block(256); !isOver;) {
            isFreeingForbidden = true;
            core.render(block);
            isFreeingForbidden = false;
        }
    });
    for (int i = 0; i < 400; ++i) {
        core.update(compiled(randomSong(random)));
        if (random() % 3 == 0)
            core.rewind();
        if (random() % 5 == 0)
            core.silence();
        EXPECT_LE(core.publishedTick(), 4 * 16);
        [[maybe_unused]] const bool finished = core.isFinished();
    }
    isOver = true;
    audio.join();
}

struct AudioEngineTest : testing::Test {
    Project first = song({.bars = 1}).note(60, 0, 4).note(64, 4, 4);
    Project second = song({.bars = 1}).note(72, 0, 8).on(ChannelKind::noise).note(0, 0, 1);
    FakeAudioOutput output;
    std::vector<std::string> log;
    AudioEngine engine{output, [this](std::string_view line) { log.emplace_back(line); }};
};

TEST_F(AudioEngineTest, RendersAtTheDevicesRateOrAt44100) {
    for (const auto& [told, expected] :
         {std::pair(22050.0, 22050.0), {0.0, 44100.0}, {NAN, 44100.0}}) {
        FakeAudioOutput device;
        device.rate = told;
        AudioEngine ours(device, {});
        ours.play(first);
        EXPECT_EQ(device.sourceRate, expected);
        ChipCore reference(compiled(first), expected);
        EXPECT_EQ(device.pull(30000), rendered(reference, 30000)) << told;
    }
}

TEST_F(AudioEngineTest, PlayingBeginsAtTickZeroAfterAStopAndWithoutOne) {
    for (const bool stops : {true, false}) {
        engine.play(first);
        output.pull(13000);
        EXPECT_EQ(engine.playheadTick(), 2);
        if (stops) {
            engine.stop();
            EXPECT_FALSE(output.isRunning());
            EXPECT_FALSE(engine.isPlaying());
            // A device that pulls all the same moves nothing that is shown.
            output.pull(7000);
        }
        EXPECT_EQ(engine.playheadTick(), stops ? -1 : 2);
        engine.play(second);
        EXPECT_EQ(engine.playheadTick(), -1);
        ChipCore reference(compiled(second), 48000);
        EXPECT_EQ(output.pull(13000), rendered(reference, 13000));
    }
}

TEST_F(AudioEngineTest, LogsWhyADeviceDoesNotStart) {
    output.startError = "busy";
    engine.play(first);
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(log, std::vector<std::string>{"Mossbit: audio engine failed to start — busy"});
}

TEST(RenderPattern, ClipsNotesToThePattern) {
    struct Case {
        std::int64_t start, length, end;
    };
    for (const Case& c :
         {Case{62, 8, 64}, Case{5, 0, 6}, Case{5, -3, 6}, Case{5, INT64_MAX, 64}, Case{-8, 4, -4},
          Case{-8, INT64_MAX, 64}, Case{-INT64_MAX, INT64_MAX, 0}}) {
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
