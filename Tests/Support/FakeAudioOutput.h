#pragma once

#include "Platform/AudioOutput.h"

#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace mossbit {

/// A sound device without sound, whose blocks a test pulls by hand.
class FakeAudioOutput : public AudioOutput {
public:
    // What the device is like.
    double rate = 48000;
    /// Not empty: `start` fails with these words.
    std::string startError;

    /// At which the source was set.
    double sourceRate = 0;

    double sampleRate() override { return rate; }

    void setSource(double sampleRate, Source source) override {
        if (m_running)
            throw std::logic_error("the source is in use");
        sourceRate = sampleRate;
        m_source = std::move(source);
    }

    bool isRunning() const override { return m_running; }

    void start() override {
        if (!startError.empty())
            throw std::runtime_error(startError);
        m_running = true;
    }

    /// Also where the device goes away.
    void stop() override { m_running = false; }

    void pullInto(std::span<float> block) { m_source(block); }

    /// The next samples.
    std::vector<float> pull(std::size_t frames) {
        std::vector<float> samples(frames, 9);
        m_source(samples);
        return samples;
    }

private:
    Source m_source;
    bool m_running = false;
};

} // namespace mossbit
