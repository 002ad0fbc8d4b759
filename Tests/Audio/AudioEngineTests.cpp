#include "Audio/AudioEngine.h"

#include "Tests/Support/AllocationGuard.h"
#include "Tests/Support/FakeAudioOutput.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <limits>

namespace mossbit {
namespace {

using Samples = std::vector<float>;

/// The samples that the device must get, from a core that nobody else touches.
class Reference {
public:
    Reference(const Project& project, double rate) : core(compile(project), rate) {}

    static std::shared_ptr<const RenderPattern> compile(const Project& project) {
        return std::make_shared<const RenderPattern>(project);
    }

    Samples next(std::size_t frames) {
        Samples samples(frames);
        core.render(samples);
        return samples;
    }

    ChipCore core;
};

class AudioEngineTest : public testing::Test {
protected:
    /// Pulls a block and checks that both channels carry the same.
    Samples pull(std::size_t frames) {
        auto [left, right] = output.pull(frames);
        EXPECT_EQ(left, right);
        return left;
    }

    Project first = song({.bars = 1}).note(60, 0, 4).note(64, 4, 4);
    Project second = song({.bars = 1}).note(72, 0, 8).on(ChannelKind::noise).note(0, 0, 1);
    FakeAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine{output, log};
};

TEST_F(AudioEngineTest, RendersAtTheDevicesRateOrAt44100) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [told, expected] : {std::pair(48000.0, 48000.0),
                                         {96000.0, 96000.0},
                                         {0.0, 44100.0},
                                         {-1.0, 44100.0},
                                         {notANumber, 44100.0}}) {
        FakeAudioOutput device;
        device.rate = told;
        AudioEngine ours(device, log);
        ours.prepare(first);
        EXPECT_FALSE(device.isRunning());
        ours.play(first);
        EXPECT_TRUE(device.isRunning());
        EXPECT_EQ(device.format, (AudioFormat{expected, 2}));
        EXPECT_EQ(device.volume, 1);
        Reference reference(first, expected);
        EXPECT_EQ(device.pull(30000).second, reference.next(30000)) << told;
    }
}

TEST_F(AudioEngineTest, PlayingAgainRestartsWithTheSongGiven) {
    engine.play(first);
    pull(10000);
    engine.play(second);
    EXPECT_EQ(engine.playheadTick(), -1);
    Reference reference(first, 48000);
    reference.next(10000);
    reference.core.update(Reference::compile(second));
    reference.core.rewind();
    EXPECT_EQ(pull(10000), reference.next(10000));
    EXPECT_EQ(engine.playheadTick(), 1);
}

TEST_F(AudioEngineTest, StoppingPausesTheDeviceAndPlayingResumesItAtTickZero) {
    engine.play(first);
    pull(13000);
    EXPECT_EQ(engine.playheadTick(), 2);
    engine.stop();
    EXPECT_FALSE(output.isRunning());
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(engine.playheadTick(), -1);
    engine.stop();
    // A device that pulls all the same moves nothing that is shown.
    const Samples late = pull(7000);
    EXPECT_EQ(engine.playheadTick(), -1);
    engine.play(first);
    EXPECT_EQ(output.connections, 1);
    EXPECT_EQ(output.preparations, 1);
    Reference reference(first, 48000);
    reference.next(13000);
    reference.core.silence();
    reference.core.rewind();
    EXPECT_EQ(late, reference.next(7000));
    reference.core.rewind();
    EXPECT_EQ(pull(13000), reference.next(13000));
    EXPECT_EQ(engine.playheadTick(), 2);
}

TEST_F(AudioEngineTest, AnEditIsHeardFromTheNextBlockOnWithoutMovingThePlayhead) {
    engine.play(first);
    pull(25000);
    engine.update(second);
    EXPECT_EQ(engine.playheadTick(), 4);
    EXPECT_TRUE(engine.isPlaying());
    Reference reference(first, 48000);
    reference.next(25000);
    reference.core.update(Reference::compile(second));
    EXPECT_EQ(pull(80000), reference.next(80000));
}

TEST_F(AudioEngineTest, TellsWhenASongThatDoesNotLoopHasFadedOut) {
    EXPECT_FALSE(engine.reachedEnd());
    engine.play(song({.bars = 1, .loop = false}).note(60, 15, 1));
    pull(96000);
    EXPECT_FALSE(engine.reachedEnd());
    pull(48000);
    EXPECT_TRUE(engine.reachedEnd());
    EXPECT_TRUE(output.isRunning());
    engine.stop();
    EXPECT_FALSE(engine.reachedEnd());
}

TEST_F(AudioEngineTest, ADeviceThatRefusesToStartLeavesOneLogLine) {
    output.startError = "No such device";
    engine.play(first);
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(log.lines,
              (std::vector<std::string>{"Mossbit: audio engine failed to start — No such device"}));
    output.startError.clear();
    engine.play(first);
    EXPECT_TRUE(engine.isPlaying());
    output.lose();
    output.startError = "Gone";
    engine.play(first);
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(engine.playheadTick(), -1);
    EXPECT_EQ(log.lines.size(), 2U);
}

TEST_F(AudioEngineTest, WithoutAFormatItTriesAgainAtTheNextPlay) {
    output.refusesFormat = true;
    engine.prepare(first);
    engine.update(second);
    EXPECT_EQ(output.connections, 0);
    output.refusesFormat = false;
    output.rate = 44100;
    engine.play(first);
    EXPECT_EQ(output.connections, 1);
    EXPECT_EQ(output.format.sampleRate, 44100);
    EXPECT_EQ(pull(9000), Reference(first, 44100).next(9000));
}

TEST_F(AudioEngineTest, CopesWithBuffersThatAreMissingOrShared) {
    engine.play(first);
    const auto pullInto = [&](std::vector<float*> buffers) { output.source()(100, buffers); };
    Samples a(100, 9), b(100, 9);
    const Samples untouched = b;
    pullInto({});
    pullInto({nullptr, b.data()});
    EXPECT_EQ(b, untouched);
    Reference reference(first, 48000);
    pullInto({a.data(), nullptr, a.data(), b.data()});
    EXPECT_EQ(a, reference.next(100));
    EXPECT_EQ(b, a);
}

TEST(AllocationGuardDeathTest, EndsTheProgram) {
    const auto allocateGuarded = [] {
        const AllocationGuard guard;
        ::operator delete(::operator new(8));
    };
    if (AllocationGuard::isEffective()) {
        EXPECT_DEATH(allocateGuarded(), "AllocationGuard");
    }
}

TEST_F(AudioEngineTest, TheCallbackNeitherAllocatesNorFrees) {
    Samples left(512), right(512);
    const auto pullGuarded = [&] {
        const AllocationGuard guard;
        output.pullInto(left, right);
    };
    engine.play(first);
    for (int block = 0; block < 200; ++block) {
        // Each edit makes the pattern before it garbage, which only this thread may collect.
        engine.update(block % 2 == 0 ? second : first);
        pullGuarded();
        if (block % 50 == 0)
            engine.play(first);
    }
    engine.stop();
    pullGuarded();
}

TEST(AudioEngineLifetime, ADeviceThatOutlivesItFallsSilentSafely) {
    FakeAudioOutput output;
    output.pullsOnThread = true;
    FakeSystemLog log;
    {
        AudioEngine engine(output, log);
        engine.play(song({.bars = 1}).note(60, 0, 16));
    }
    EXPECT_FALSE(output.isRunning());
    EXPECT_EQ(output.pull(100).first.size(), 100U);
}

} // namespace
} // namespace mossbit
