#include "Audio/AudioEngine.h"

#include <exception>
#include <string>
#include <utility>

namespace mossbit {

namespace {

constexpr double fallbackSampleRate = 44100;

std::shared_ptr<const RenderPattern> compile(const Project& project) {
    return std::make_shared<const RenderPattern>(project);
}

} // namespace

AudioEngine::AudioEngine(AudioOutput& engine, SystemLog log)
    : m_engine(engine), m_log(std::move(log)) {}

AudioEngine::~AudioEngine() {
    // The output lives on and would go on pulling a core that nobody can stop any more.
    m_engine.stop();
}

void AudioEngine::prepare(const Project& project) {
    if (m_core)
        return;
    const double deviceRate = m_engine.sampleRate();
    const double sampleRate = deviceRate > 0 ? deviceRate : fallbackSampleRate;
    m_core = std::make_shared<ChipCore>(compile(project), sampleRate);
    m_engine.setSource(sampleRate, [core = m_core](std::span<float> into) { core->render(into); });
}

void AudioEngine::play(const Project& project) {
    prepare(project);
    update(project);
    m_core->rewind();
    if (!m_engine.isRunning()) {
        try {
            m_engine.start();
        } catch (const std::exception& error) {
            m_log(std::string("Mossbit: audio engine failed to start — ") + error.what());
            m_isPlaying = false;
            return;
        }
    }
    m_isPlaying = true;
}

void AudioEngine::stop() {
    m_isPlaying = false;
    if (m_core) {
        m_core->silence();
        m_core->rewind();
    }
    m_engine.stop();
}

void AudioEngine::update(const Project& project) {
    if (m_core)
        m_core->update(compile(project));
}

std::int64_t AudioEngine::playheadTick() const {
    return m_isPlaying ? m_core->publishedTick() : -1;
}

bool AudioEngine::reachedEnd() const {
    return m_core && m_core->isFinished();
}

} // namespace mossbit
