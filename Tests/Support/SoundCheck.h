#pragma once

#include "Platform/AudioOutput.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace mossbit {

/// A source whose samples count the frames, so that every place can be told by its sound.
class CountingSource {
public:
    /// A number of frames as a sample; exact, and below full scale for minutes.
    static float sampleAt(int frame) { return static_cast<float>(frame) / (1 << 23); }

    /// Frames given so far.
    int frames() const { return m_frames; }

    /// Waits until so many more are given; false if they are not.
    bool waitFor(int frames) const {
        return waitUntil([this, end = m_frames + frames] { return m_frames >= end; });
    }

    AudioOutput::Source source() {
        return [this](std::span<float> into) {
            for (float& sample : into)
                sample = sampleAt(++m_frames);
        };
    }

private:
    std::atomic<int> m_frames = 0;
};

/// Why the output did not start, or nothing.
inline std::string startFailure(AudioOutput& output) {
    try {
        output.start();
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// What is not silence in a file of interleaved 32-bit float frames: its left channel, which the
/// right one must equal. An incomplete frame at the end is left out.
inline std::vector<float> readRecording(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<float> left;
    float frame[2];
    while (stream.read(reinterpret_cast<char*>(frame), sizeof frame)) {
        EXPECT_EQ(frame[0], frame[1]);
        if (frame[0] != 0)
            left.push_back(frame[0]);
    }
    return left;
}

} // namespace mossbit
