#pragma once

#include "Audio/AudioEngine.h"
#include "Tests/Support/WaitUntil.h"

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <span>
#include <utility>
#include <vector>

/// Compares what came out of a sound device with what the core renders.
namespace mossbit {

/// A real output whose blocks are counted on their way out. Its callback must not allocate.
class WatchedOutput : public AudioOutput {
public:
    explicit WatchedOutput(AudioOutput& real);

    /// Frames that the device has pulled so far.
    std::size_t frames() const { return m_frames; }
    /// The frame at which each block began. Only while the device is not pulling.
    std::vector<std::size_t> blockStarts() const;

    double outputSampleRate() override { return m_real.outputSampleRate(); }
    std::optional<AudioFormat> standardFormat(double sampleRate, int channels) override {
        return m_real.standardFormat(sampleRate, channels);
    }
    void connectSource(const AudioFormat& format, Source source) override;
    void setOutputVolume(float volume) override { m_real.setOutputVolume(volume); }
    void prepare() override { m_real.prepare(); }
    bool isRunning() const override { return m_real.isRunning(); }
    void start() override { m_real.start(); }
    void pause() override { m_real.pause(); }

private:
    AudioOutput& m_real;
    std::vector<std::size_t> m_blockStarts;
    std::size_t m_blocks = 0;
    std::atomic<std::size_t> m_frames = 0;
};

/// Eight bars of which no two are equal, so that every place can be told by its sound.
Project unmistakableSong();

std::vector<float> rendered(const Project& project, double rate, std::size_t frames);

/// What a sound device was given, per channel.
struct Recording {
    std::vector<float> left;
    std::vector<float> right;
};

/// Reads interleaved 32-bit float frames; an incomplete one at the end is left out.
Recording readRecording(const std::filesystem::path& file);

/// How far a recording follows the samples that were rendered.
struct Comparison {
    /// Rendered samples found, in their order and bit for bit.
    std::size_t found = 0;
    /// The recorded sample that is neither the next rendered one nor silence, or −1.
    std::ptrdiff_t stranger = -1;
    /// Silent samples in the recording before the first and between the others.
    std::size_t silentBefore = 0;
    std::size_t silentBetween = 0;
};

Comparison compare(std::span<const float> recorded, std::span<const float> rendered);

/// What a person did while the device was pulling: play, edit, stop, play again.
class Session {
public:
    /// Plays `frames` frames of each of the three pieces.
    Session(WatchedOutput& output, std::size_t frames);

    /// Whether the device ever started.
    bool played() const { return m_played; }
    /// All frames that the device has pulled.
    std::size_t frames() const { return m_frames; }
    /// The samples that the core gave. The frames at which it took its orders are known only to a
    /// block or two; of those possible, the ones with which the samples follow the recording.
    std::vector<float> expected(std::span<const float> recorded) const;

private:
    struct Order {
        /// Frames pulled when the order was about to be given, and when it had been given.
        std::size_t earliest = 0;
        std::size_t latest = 0;
        std::function<void(ChipCore&)> give;
    };

    void order(const std::function<void()>& act, std::function<void(ChipCore&)> give);
    bool playFor(std::size_t frames);
    std::vector<float> renderedWith(std::span<const std::size_t> places) const;

    WatchedOutput& m_output;
    double m_rate = 0;
    std::vector<Order> m_orders;
    std::vector<std::size_t> m_blockStarts;
    std::size_t m_frames = 0;
    bool m_played = false;
};

} // namespace mossbit
