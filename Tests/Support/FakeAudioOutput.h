#pragma once

#include "Platform/AudioOutput.h"

#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace mossbit {

/// A sound device without sound. A test pulls blocks by hand, or lets a thread pull them as fast
/// as it can while the device runs.
class FakeAudioOutput : public AudioOutput {
public:
    // What the device is like.
    double rate = 48000;
    bool refusesFormat = false;
    /// Not empty: `start` fails with these words.
    std::string startError;
    bool pullsOnThread = false;

    // What was asked of it.
    float volume = -1;
    AudioFormat format;

    ~FakeAudioOutput() override { FakeAudioOutput::pause(); }

    double outputSampleRate() override { return rate; }

    std::optional<AudioFormat> standardFormat(double sampleRate, int channels) override {
        if (refusesFormat)
            return std::nullopt;
        return AudioFormat{sampleRate, channels};
    }

    void connectSource(const AudioFormat& newFormat, Source source) override {
        format = newFormat;
        m_source = std::move(source);
    }

    void setOutputVolume(float newVolume) override { volume = newVolume; }
    void prepare() override {}
    bool isRunning() const override { return m_running; }

    void start() override {
        if (!startError.empty())
            throw std::runtime_error(startError);
        m_running = true;
        if (pullsOnThread)
            m_thread = std::jthread([this](const std::stop_token& token) {
                std::vector<float> left(512), right(512);
                while (!token.stop_requested())
                    pullInto(left, right);
            });
    }

    void pause() override {
        m_running = false;
        m_thread = {};
    }

    /// The device went away while it was running.
    void lose() { m_running = false; }

    void pullInto(std::vector<float>& left, std::vector<float>& right) {
        float* const buffers[] = {left.data(), right.data()};
        m_source(static_cast<std::uint32_t>(left.size()), buffers);
    }

    /// The next samples of both channels.
    std::pair<std::vector<float>, std::vector<float>> pull(std::size_t frames) {
        std::pair both(std::vector<float>(frames, 9), std::vector<float>(frames, 9));
        pullInto(both.first, both.second);
        return both;
    }

    const Source& source() const { return m_source; }

private:
    Source m_source;
    bool m_running = false;
    std::jthread m_thread;
};

} // namespace mossbit
