#include "Platform/SdlAudioOutput.h"

#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

namespace mossbit {
namespace {

/// Lets SDL choose one sound system for the length of a test.
class SoundSystem {
public:
    explicit SoundSystem(const char* driver) { setenv("SDL_AUDIODRIVER", driver, 1); }
    ~SoundSystem() {
        unsetenv("SDL_AUDIODRIVER");
        unsetenv("SDL_DISKAUDIOFILE");
        unsetenv("SDL_DISKAUDIODELAY");
    }

    void writeTo(const std::filesystem::path& file) {
        setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);
        // Milliseconds per block: faster than real time.
        setenv("SDL_DISKAUDIODELAY", "1", 1);
    }
};

TEST(SdlAudioOutput, GivesTheDeviceWhatTheCoreRenders) {
    const ScratchFolder folder;
    SoundSystem disk("disk");
    disk.writeTo(folder / "sound.raw");
    std::size_t frames = 0;
    std::optional<Session> session;
    {
        SdlAudioOutput sdl;
        EXPECT_EQ(sdl.deviceFrames(), 0);
        WatchedOutput output(sdl);
        session.emplace(output, 40'000);
        ASSERT_TRUE(session->played());
        EXPECT_LE(sdl.deviceFrames(), 1024);
        frames = session->frames();
    }
    const Recording recording = readRecording(folder / "sound.raw");
    EXPECT_EQ(recording.left, recording.right);
    const Comparison comparison = compare(recording.left, session->expected(recording.left));
    EXPECT_EQ(comparison.found, frames);
    EXPECT_EQ(comparison.stranger, -1);
    // A device that is open but paused is given whole blocks of silence; nothing else is.
    EXPECT_EQ(comparison.silentBefore % 1024, 0);
    EXPECT_EQ(comparison.silentBetween % 1024, 0);
}

TEST(SdlAudioOutput, ScalesByTheVolume) {
    const ScratchFolder folder;
    SoundSystem disk("disk");
    disk.writeTo(folder / "sound.raw");
    {
        SdlAudioOutput output;
        output.connectSource({.sampleRate = 48000, .channels = 2},
                             [](std::uint32_t frames, std::span<float* const> buffers) {
                                 std::fill_n(buffers[0], frames, 0.5f);
                                 std::fill_n(buffers[1], frames, -1.0f);
                             });
        output.setOutputVolume(0.5f);
        output.prepare();
        output.start();
        EXPECT_TRUE(output.isRunning());
        EXPECT_TRUE(
            waitUntil([&] { return readRecording(folder / "sound.raw").left.size() > 8192; }));
        output.pause();
        EXPECT_FALSE(output.isRunning());
    }
    const Recording recording = readRecording(folder / "sound.raw");
    EXPECT_EQ(std::count(recording.left.begin(), recording.left.end(), 0.25f),
              std::count(recording.right.begin(), recording.right.end(), -0.5f));
    EXPECT_NE(std::count(recording.left.begin(), recording.left.end(), 0.25f), 0);
}

TEST(SdlAudioOutput, TellsWhyItDoesNotStart) {
    const SoundSystem none("bogus");
    SdlAudioOutput output;
    EXPECT_EQ(output.outputSampleRate(), 0);
    FakeSystemLog log;
    AudioEngine engine(output, log);
    for (const int attempt : {1, 2}) {
        engine.play(unmistakableSong());
        EXPECT_FALSE(engine.isPlaying());
        ASSERT_EQ(log.lines.size(), attempt);
        EXPECT_EQ(log.lines.back(), "Mossbit: audio engine failed to start — Audio target 'bogus' "
                                    "not available");
    }
}

TEST(SdlAudioOutput, StartsOnceADeviceIsThere) {
    const ScratchFolder folder;
    SdlAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine(output, log);
    {
        const SoundSystem none("bogus");
        engine.play(unmistakableSong());
        EXPECT_FALSE(engine.isPlaying());
    }
    SoundSystem disk("disk");
    disk.writeTo(folder / "sound.raw");
    engine.play(unmistakableSong());
    EXPECT_TRUE(engine.isPlaying());
    EXPECT_EQ(log.lines.size(), 1);
}

TEST(SdlAudioOutput, MakesOnlyFormatsThatItCanPlay) {
    SdlAudioOutput output;
    EXPECT_EQ(output.standardFormat(48000, 2), (AudioFormat{.sampleRate = 48000, .channels = 2}));
    EXPECT_EQ(output.standardFormat(0, 2), std::nullopt);
    EXPECT_EQ(output.standardFormat(-1, 2), std::nullopt);
    EXPECT_EQ(output.standardFormat(std::numeric_limits<double>::quiet_NaN(), 2), std::nullopt);
    EXPECT_EQ(output.standardFormat(48000, 1), std::nullopt);
    EXPECT_THROW(output.start(), std::runtime_error);
}

} // namespace
} // namespace mossbit
