#pragma once

#include "Platform/AudioOutput.h"

#include <memory>
#include <thread>

namespace mossbit {

/// The default sound device through SDL2.
///
/// A worker thread makes all calls that may be slow: a sound system that hangs delays the main
/// thread by two seconds at most. When the device is lost while playing, or asks for nothing for
/// two seconds, the worker looks for a new default device for a few seconds and goes on there at
/// the same rate; if none comes, `isRunning` turns false. A device that has been stopped for a few
/// seconds is closed; the next start goes to what is the default by then.
class SdlAudioOutput final : public AudioOutput {
public:
    /// Asks for the device's rate in the background.
    SdlAudioOutput();
    ~SdlAudioOutput() override;

    double sampleRate() override;
    void setSource(double sampleRate, Source source) override;
    bool isRunning() const override;
    void start() override;
    void stop() override;

private:
    class Device;

    /// Shared with the worker, which outlives the output where the sound system hangs.
    std::shared_ptr<Device> m_device;
    std::thread m_worker;
};

} // namespace mossbit
