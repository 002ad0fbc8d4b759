#pragma once

#include "Platform/AudioOutput.h"

#include <memory>
#include <thread>

namespace mossbit {

class SdlLine;

/// The default sound device through SDL2.
///
/// A thread of its own, the keeper, makes all slow calls: a sound system that hangs delays the main
/// thread by two seconds at most. When the device is lost while playing, the keeper looks for a new
/// default device for a few seconds and goes on there at the same rate; if none comes, `isRunning`
/// turns false. A device that has been paused for a few seconds is released.
class SdlAudioOutput final : public AudioOutput {
public:
    SdlAudioOutput();
    ~SdlAudioOutput() override;

    double outputSampleRate() override;
    std::optional<AudioFormat> standardFormat(double sampleRate, int channels) override;
    void connectSource(const AudioFormat& format, Source source) override;
    void setOutputVolume(float volume) override;
    void prepare() override;
    bool isRunning() const override;
    void start() override;
    void pause() override;

    /// Frames per buffer that the open device gave; 0 while none is open.
    int deviceFrames() const;

private:
    std::shared_ptr<SdlLine> m_line;
    std::thread m_keeper;
};

} // namespace mossbit
