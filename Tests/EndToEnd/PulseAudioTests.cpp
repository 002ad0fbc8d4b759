#include "Audio/AudioEngine.h"
#include "Platform/SdlAudioOutput.h"
#include "Tests/Support/SoundCheck.h"
#include "Tests/Support/SoundServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace mossbit {
namespace {

using namespace std::chrono_literals;

struct PulseAudio : testing::Test {
    void SetUp() override {
        ASSERT_TRUE(hasStarted);
        EXPECT_EQ(output->sampleRate(), 48000);
        output->setSource(48000, sound.source());
        ASSERT_EQ(startFailure(*output), "");
        ASSERT_TRUE(sound.waitFor(24'000));
    }

    CountingSource sound;
    SoundServer server;
    const bool hasStarted = server.start();
    const std::shared_ptr<AudioOutput> output = sdlAudioOutput();
};

TEST_F(PulseAudio, PlaybackGoesOnWhenTheDeviceComesBack) {
    for (const bool serverDies : {true, false, true, false}) {
        const float before = CountingSource::sampleAt(sound.frames());
        serverDies ? server.kill() : server.removeDevice();
        EXPECT_TRUE(output->isRunning());
        // Long enough to look for a device on a server that has none, which SDL alone would not
        // survive.
        if (!serverDies)
            std::this_thread::sleep_for(700ms);
        ASSERT_TRUE(serverDies ? server.start() : server.addDevice());
        ASSERT_TRUE(sound.waitFor(24'000));
        ASSERT_TRUE(server.waitForSound());
        const std::vector<float> recording = server.recording();
        EXPECT_GT(recording.front(), before);
        EXPECT_TRUE(std::ranges::is_sorted(recording, std::less_equal()));
        EXPECT_TRUE(output->isRunning());
    }
    output->stop();
    EXPECT_FALSE(output->isRunning());
}

TEST_F(PulseAudio, PlaybackEndsWhileTheServerStaysAway) {
    server.kill();
    EXPECT_TRUE(waitUntil([&] { return !output->isRunning(); }));
    output->stop();
    EXPECT_NE(startFailure(*output), "");
    ASSERT_TRUE(server.start());
    ASSERT_EQ(startFailure(*output), "");
    ASSERT_TRUE(sound.waitFor(1));
    // Nothing plays now, but the device is still open.
    output->stop();
    server.kill();
    ASSERT_TRUE(server.start());
    ASSERT_EQ(startFailure(*output), "");
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, EveryStartGoesToWhatIsTheDefaultByThen) {
    output->stop();
    unsetenv("SDL_AUDIODRIVER");
    server.addOtherSystem();
    ASSERT_EQ(startFailure(*output), "");
    server.kill();
    // Long enough for the loss to be seen; at first, a recovery tries the lost system only.
    std::this_thread::sleep_for(700ms);
    output->stop();
    EXPECT_EQ(startFailure(*output), "");
    output->stop();
    ASSERT_TRUE(server.start());
    // Until the other system is let go.
    std::this_thread::sleep_for(4s);
    EXPECT_EQ(startFailure(*output), "");
    EXPECT_TRUE(server.waitForSound());
}

TEST_F(PulseAudio, DoesNotHangWithTheServer) {
    server.hang();
    EXPECT_TRUE(waitUntil([&] { return !output->isRunning(); }));
    output->stop();
    EXPECT_EQ(startFailure(*output), "The sound system does not answer");
    server.wakeUp();
    EXPECT_EQ(startFailure(*output), "");
    EXPECT_TRUE(sound.waitFor(24'000));
}

} // namespace
} // namespace mossbit
