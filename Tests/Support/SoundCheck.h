#pragma once

#include "Audio/AudioEngine.h"
#include "Tests/Support/WaitUntil.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

/// Compares what came out of a sound device with what the core renders.
namespace mossbit {

/// A real output that keeps what its source gives. The source's callback must not allocate.
class WatchedOutput : public AudioOutput {
public:
    explicit WatchedOutput(AudioOutput& real);

    /// Frames that the device has pulled so far.
    std::size_t frames() const { return m_frames; }
    std::span<const float> given() const { return std::span(m_given).first(m_frames); }
    /// Waits until the device has pulled so many frames more; false if it does not.
    bool waitFor(std::size_t frames) const;

    double sampleRate() override { return m_real.sampleRate(); }
    void setSource(double sampleRate, Source source) override;
    bool isRunning() const override { return m_real.isRunning(); }
    void start() override { m_real.start(); }
    void stop() override { m_real.stop(); }

private:
    AudioOutput& m_real;
    std::vector<float> m_given;
    std::atomic<std::size_t> m_frames = 0;
};

/// Eight bars of which no two are equal, so that every place can be told by its sound.
Project unmistakableSong();

/// What a person does while the device pulls: play, edit, stop, play again, for `frames` frames
/// each. Checks that the device started and got the song from its first sample on.
void playSession(WatchedOutput& output, std::size_t frames);

/// The left channel of a file of interleaved 32-bit float frames, which the right one must equal.
/// An incomplete frame at the end is left out.
std::vector<float> readRecording(const std::filesystem::path& file);

/// How many of the samples that were given a recording holds, in their order and bit for bit.
/// Silence may lie between; if there is anything else, 0.
std::size_t found(std::span<const float> recorded, std::span<const float> given);

} // namespace mossbit
