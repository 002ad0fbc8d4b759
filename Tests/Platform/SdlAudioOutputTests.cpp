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
    std::optional<SdlAudioOutput> sdl(std::in_place);
    WatchedOutput output(*sdl);
    playSession(output, 40'000);
    EXPECT_LE(sdl->deviceFrames(), 1024);
    sdl.reset();
    const Comparison comparison = compare(readRecording(folder / "sound.raw"), output.given());
    EXPECT_EQ(comparison.found, output.frames());
    EXPECT_EQ(comparison.stranger, -1);
    // A device that is open but paused is given whole blocks of silence; nothing else is.
    EXPECT_EQ(comparison.silentBefore % 1024, 0);
    EXPECT_EQ(comparison.silentBetween % 1024, 0);
}

TEST(SdlAudioOutput, TellsWhyItDoesNotStartAndDoesOnceADeviceIsThere) {
    const ScratchFolder folder;
    SdlAudioOutput output;
    FakeSystemLog log;
    AudioEngine engine(output, log);
    {
        const SoundSystem none("bogus");
        EXPECT_EQ(output.outputSampleRate(), 0);
        engine.play(unmistakableSong());
        EXPECT_FALSE(engine.isPlaying());
    }
    SoundSystem disk("disk");
    disk.writeTo(folder / "sound.raw");
    engine.play(unmistakableSong());
    EXPECT_TRUE(engine.isPlaying());
    EXPECT_EQ(log.lines, std::vector<std::string>{"Mossbit: audio engine failed to start — Audio "
                                                  "target 'bogus' not available"});
}

} // namespace
} // namespace mossbit
