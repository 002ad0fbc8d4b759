#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace mossbit {

/// 32-bit float samples, one buffer per channel.
struct AudioFormat {
    /// Frames per second.
    double sampleRate = 0;
    int channels = 0;

    bool operator==(const AudioFormat&) const = default;
};

/// The default sound device, which pulls samples from one source.
class AudioOutput {
public:
    /// Fills every buffer with `frames` samples; a buffer may be null. Runs on the audio thread.
    using Source = std::function<void(std::uint32_t frames, std::span<float* const> buffers)>;

    virtual ~AudioOutput() = default;

    // Main thread.

    /// The device's own rate in Hz; 0 or less when there is no device or it does not tell.
    virtual double outputSampleRate() = 0;

    /// The float format with that rate and number of channels; nothing if it cannot be made.
    virtual std::optional<AudioFormat> standardFormat(double sampleRate, int channels) = 0;

    /// Sets the source and the format in which it is pulled. Called once, before `prepare`.
    virtual void connectSource(const AudioFormat& format, Source source) = 0;

    /// 0 … 1.
    virtual void setOutputVolume(float volume) = 0;

    /// Allocates what `start` needs.
    virtual void prepare() = 0;

    virtual bool isRunning() const = 0;

    /// Starts pulling. Throws `std::runtime_error` with the system's description if the device
    /// cannot be started.
    virtual void start() = 0;

    /// Stops pulling; the source is not called after this returns, until the next `start`.
    virtual void pause() = 0;
};

} // namespace mossbit
