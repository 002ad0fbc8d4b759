#include "Platform/SdlAudioOutput.h"

#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
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
    EXPECT_LE(sdl->deviceFrames(), 1024);
    sdl.reset();
    EXPECT_EQ(found(readRecording(folder / "sound.raw"), output.given()), output.frames());
}

TEST(SdlAudioOutput, TellsWhyItDoesNotStartAndDoesOnceADeviceIsThere) {
    const ScratchFolder folder;
    SdlAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine(output, log);
    useSoundSystem("bogus");
    EXPECT_EQ(output.outputSampleRate(), 0);
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
