#include "Platform/SdlAudioOutput.h"

#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SoundCheck.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace mossbit {
namespace {

/// Lets SDL write to a file instead of a device, faster than in real time.
void useDisk(const std::filesystem::path& file) {
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);
    setenv("SDL_DISKAUDIODELAY", "1", 1); // Milliseconds per block.
}

TEST(SdlAudioOutput, PlaysEverySampleOnBothSidesOnceADeviceIsThere) {
    const ScratchFolder folder;
    CountingSource sound;
    setenv("SDL_AUDIODRIVER", "bogus", 1);
    auto output = sdlAudioOutput();
    EXPECT_EQ(output->sampleRate(), 0);
    output->setSource(44100, sound.source());
    EXPECT_EQ(startFailure(*output), "Audio target 'bogus' not available");
    EXPECT_FALSE(output->isRunning());
    useDisk(folder / "sound.raw");
    for (int i = 0; i < 2; ++i) {
        output->start();
        EXPECT_TRUE(output->isRunning() && sound.waitFor(40'000));
        output->stop();
        EXPECT_FALSE(output->isRunning());
    }
    output.reset();
    std::vector<float> given;
    for (int frame = 1; frame <= sound.frames(); ++frame)
        given.push_back(CountingSource::sampleAt(frame));
    EXPECT_TRUE(readRecording(folder / "sound.raw") == given);
}

TEST(SdlAudioOutput, PullsBlocksOfAboutTheSameTimeAtEveryRate) {
    const ScratchFolder folder;
    useDisk(folder / "sound.raw");
    for (const double rate : {22050, 44100, 48000, 96000, 192000}) {
        std::atomic<std::size_t> frames = 0;
        const std::shared_ptr<AudioOutput> output = sdlAudioOutput();
        output->setSource(rate, [&](std::span<float> into) { frames = into.size(); });
        output->start();
        EXPECT_TRUE(waitUntil([&] { return frames > 0; }));
        EXPECT_NEAR(static_cast<double>(frames) / rate, 0.022, 0.002) << rate;
    }
}

} // namespace
} // namespace mossbit
