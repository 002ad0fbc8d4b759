#pragma once

#include <functional>
#include <span>

namespace mossbit {

/// The default sound device, which pulls mono samples and plays them on both sides.
class AudioOutput {
public:
    /// Fills its argument with the next samples, −1 … 1. Runs on the audio thread.
    using Source = std::function<void(std::span<float>)>;

    virtual ~AudioOutput() = default;

    // Main thread.

    /// The device's own rate in Hz; 0 or less when there is no device or it does not tell.
    virtual double sampleRate() = 0;

    /// What `start` plays, at which rate in Hz. Called once, before the first start.
    virtual void setSource(double sampleRate, Source source) = 0;

    virtual bool isRunning() const = 0;

    /// Starts pulling. Throws `std::runtime_error` with the system's description if the device
    /// cannot be started.
    virtual void start() = 0;

    /// Stops pulling; the source is not called after this returns, until the next `start`.
    virtual void stop() = 0;
};

} // namespace mossbit
