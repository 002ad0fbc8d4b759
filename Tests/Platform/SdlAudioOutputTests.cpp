#include "Platform/SdlAudioOutput.h"

#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>

namespace mossbit {
namespace {

void useSoundSystem(const char* driver) {
    setenv("SDL_AUDIODRIVER", driver, 1);
}

/// Lets SDL write to a file instead of a device, faster than in real time.
void useDisk(const std::filesystem::path& file) {
    useSoundSystem("disk");
    setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);
    setenv("SDL_DISKAUDIODELAY", "1", 1); // Milliseconds per block.
}

TEST(SdlAudioOutput, GivesTheDeviceWhatTheCoreRenders) {
    const ScratchFolder folder;
    useDisk(folder / "sound.raw");
    std::optional<SdlAudioOutput> sdl(std::in_place);
    WatchedOutput output(*sdl);
    playSession(output, 40'000);
    sdl.reset();
    EXPECT_EQ(found(readRecording(folder / "sound.raw"), output.given()), output.frames());
}

TEST(SdlAudioOutput, PullsBlocksOfAboutTheSameTimeAtEveryRate) {
    const ScratchFolder folder;
    useDisk(folder / "sound.raw");
    for (const double rate : {22050, 44100, 48000, 96000, 192000}) {
        std::atomic<std::size_t> frames = 0;
        SdlAudioOutput output;
        output.setSource(rate, [&](std::span<float> into) { frames = into.size(); });
        output.start();
        EXPECT_TRUE(waitUntil([&] { return frames > 0; }));
        EXPECT_NEAR(static_cast<double>(frames) / rate, 0.022, 0.002) << rate;
    }
}

TEST(SdlAudioOutput, TellsWhyItDoesNotStartAndDoesOnceADeviceIsThere) {
    const ScratchFolder folder;
    useSoundSystem("bogus");
    SdlAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine(output, log);
    EXPECT_EQ(output.sampleRate(), 0);
    engine.play(unmistakableSong());
    EXPECT_FALSE(engine.isPlaying());
    useDisk(folder / "sound.raw");
    engine.play(unmistakableSong());
    EXPECT_TRUE(engine.isPlaying());
    EXPECT_EQ(log.lines, std::vector<std::string>{"Mossbit: audio engine failed to start — Audio "
                                                  "target 'bogus' not available"});
}

} // namespace
} // namespace mossbit
