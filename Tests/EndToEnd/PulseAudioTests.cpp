#include "Platform/SdlAudioOutput.h"
#include "Tests/Support/Fakes.h"
#include "Tests/Support/SoundCheck.h"
#include "Tests/Support/SoundServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace mossbit {
namespace {

struct PulseAudio : testing::Test {
    void SetUp() override { ASSERT_TRUE(hasStarted); }

    SoundServer server;
    const bool hasStarted = server.start();
    SdlAudioOutput sdl;
    WatchedOutput output{sdl};
    FakeSystemLog log;
    AudioEngine engine{output, log};
};

/// The frame of `samples` at which a stretch of the recording lies, or −1 while there is none
/// without gaps.
std::ptrdiff_t placeOf(std::span<const float> recorded, std::span<const float> samples) {
    constexpr std::ptrdiff_t length = 1500;
    for (; std::ssize(recorded) >= length; recorded = recorded.subspan(length)) {
        const auto stretch = recorded.first(length);
        const auto place = std::ranges::search(samples, stretch).begin();
        if (std::ranges::count(stretch, 0.0f) < length / 10 && place != samples.end())
            return place - samples.begin();
    }
    return -1;
}

TEST_F(PulseAudio, PlaybackGoesOnWhenTheDeviceComesBack) {
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying());
    std::ptrdiff_t lastPlace = -1;
    for (const bool serverDies : {true, false, true, false}) {
        ASSERT_TRUE(output.waitFor(24'000));
        serverDies ? server.kill() : server.removeDevice();
        EXPECT_TRUE(output.isRunning());
        // Long enough to look for a device on a server that has none, which SDL alone would not
        // survive.
        if (!serverDies)
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
        ASSERT_TRUE(serverDies ? server.start() : server.addDevice());
        std::ptrdiff_t place = -1;
        EXPECT_TRUE(waitUntil([&] {
            place = placeOf(server.recording(), output.given());
            return place >= 0;
        }));
        EXPECT_GT(place, lastPlace);
        EXPECT_TRUE(output.isRunning());
        lastPlace = place;
    }
    engine.stop();
    EXPECT_FALSE(output.isRunning());
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(PulseAudio, PlaybackEndsWhileTheServerStaysAway) {
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying());
    server.kill();
    EXPECT_TRUE(waitUntil([&] { return !output.isRunning(); }));
    engine.stop();
    engine.play(unmistakableSong());
    EXPECT_FALSE(engine.isPlaying());
    EXPECT_EQ(log.lines.size(), 1);
    ASSERT_TRUE(server.start());
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying() && output.waitFor(1));
    // Nothing plays now, but the device is still open.
    engine.stop();
    server.kill();
    ASSERT_TRUE(server.start());
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying());
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, EveryStartGoesToWhatIsTheDefaultByThen) {
    unsetenv("SDL_AUDIODRIVER");
    server.addOtherSystem();
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying());
    server.kill();
    // Long enough for the loss to be seen; a recovery tries the lost system only.
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    engine.stop();
    engine.play(unmistakableSong());
    EXPECT_TRUE(engine.isPlaying());
    engine.stop();
    ASSERT_TRUE(server.start());
    // Until the other system is let go.
    std::this_thread::sleep_for(std::chrono::seconds(4));
    engine.play(unmistakableSong());
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, DoesNotHangWithTheServer) {
    engine.play(unmistakableSong());
    ASSERT_TRUE(engine.isPlaying() && output.waitFor(24'000));
    server.hang();
    EXPECT_TRUE(waitUntil([&] { return engine.hasLostOutput(); }));
    engine.stop();
    engine.play(unmistakableSong());
    EXPECT_FALSE(engine.isPlaying());
    ASSERT_EQ(log.lines.size(), 1);
    EXPECT_EQ(log.lines[0],
              "Mossbit: audio engine failed to start — The sound system does not answer");
    server.wakeUp();
    engine.play(unmistakableSong());
    EXPECT_TRUE(engine.isPlaying() && output.waitFor(24'000));
}

} // namespace
} // namespace mossbit
