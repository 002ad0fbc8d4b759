#include "Audio/AudioEngine.h"

#include "Tests/Support/FakeAudioOutput.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/Rendering.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <limits>

namespace mossbit {
namespace {

class AudioEngineTest : public testing::Test {
protected:
    Project first = song({.bars = 1}).note(60, 0, 4).note(64, 4, 4);
    Project second = song({.bars = 1}).note(72, 0, 8).on(ChannelKind::noise).note(0, 0, 1);
    FakeAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine{output, log};
};

TEST_F(AudioEngineTest, RendersAtTheDevicesRateOrAt44100) {
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [told, expected] :
         {std::pair(22050.0, 22050.0), {0.0, 44100.0}, {notANumber, 44100.0}}) {
        FakeAudioOutput device;
        device.rate = told;
        AudioEngine ours(device, log);
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
    EXPECT_EQ(log.lines, std::vector<std::string>{"Mossbit: audio engine failed to start — busy"});
}

} // namespace
} // namespace mossbit
