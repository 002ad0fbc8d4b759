#include "Platform/SdlAudioOutput.h"

#include "Platform/SdlLine.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace mossbit {

SdlAudioOutput::SdlAudioOutput()
    : m_line(std::make_shared<SdlLine>()), m_keeper([line = m_line] { line->keep(); }) {}

SdlAudioOutput::~SdlAudioOutput() {
    if (m_line->end()) {
        m_keeper.join();
    } else {
        // The sound system hangs; the end of the process must not wait for it.
        m_keeper.detach();
    }
}

double SdlAudioOutput::outputSampleRate() {
    return m_line->ask<double>([line = m_line] { return line->queryRate(); }).value_or(0);
}

std::optional<AudioFormat> SdlAudioOutput::standardFormat(double sampleRate, int channels) {
    const bool possible = std::isfinite(sampleRate) && sampleRate >= 1 && sampleRate <= 1e6;
    if (!possible || channels != 2)
        return std::nullopt;
    return AudioFormat{.sampleRate = sampleRate, .channels = channels};
}

void SdlAudioOutput::connectSource(const AudioFormat& format, Source source) {
    m_line->setSource(format, std::move(source));
}

void SdlAudioOutput::setOutputVolume(float volume) {
    m_line->setVolume(volume);
}

void SdlAudioOutput::prepare() {
    m_line->allocate();
}

bool SdlAudioOutput::isRunning() const {
    return m_line->isPlaying();
}

void SdlAudioOutput::start() {
    if (m_line->isPlaying() || m_line->resume())
        return;
    const auto open = [line = m_line] {
        line->open();
        return true;
    };
    if (!m_line->ask<bool>(open) && m_line->giveUp())
        throw std::runtime_error("The sound system does not answer");
}

void SdlAudioOutput::pause() {
    m_line->pause();
}

int SdlAudioOutput::deviceFrames() const {
    return m_line->deviceFrames();
}

} // namespace mossbit
