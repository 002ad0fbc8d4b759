#include "Audio/AudioEngine.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace mossbit {

namespace {

constexpr double fallbackSampleRate = 44100;
constexpr int outputChannels = 2;

// Audio thread.
void renderBlock(ChipCore& core, std::uint32_t frames, std::span<float* const> buffers) noexcept {
    if (buffers.empty() || buffers.front() == nullptr)
        return;
    float* const first = buffers.front();
    core.render({first, frames});
    for (float* const buffer : buffers.subspan(1))
        if (buffer != nullptr && buffer != first)
            std::copy_n(first, frames, buffer);
}

std::shared_ptr<const RenderPattern> compile(const Project& project) {
    return std::make_shared<const RenderPattern>(project);
}

} // namespace

AudioEngine::AudioEngine(AudioOutput& engine, SystemLog log)
    : m_engine(engine), m_log(std::move(log)) {}

AudioEngine::~AudioEngine() {
    // The output lives on and would go on pulling a core that nobody can stop any more.
    if (m_engine.isRunning())
        m_engine.pause();
}

void AudioEngine::prepare(const Project& project) {
    if (m_configured)
        return;
    const double deviceRate = m_engine.outputSampleRate();
    const double sampleRate = deviceRate > 0 ? deviceRate : fallbackSampleRate;
    m_core = std::make_shared<ChipCore>(compile(project), sampleRate);
    // Without a format the core stays, so that edits still reach it; the next call tries again.
    const std::optional<AudioFormat> format = m_engine.standardFormat(sampleRate, outputChannels);
    if (!format)
        return;
    m_engine.connectSource(*format,
                           [core = m_core](std::uint32_t frames, std::span<float* const> buffers) {
                               renderBlock(*core, frames, buffers);
                           });
    m_engine.setOutputVolume(1);
    m_engine.prepare();
    m_configured = true;
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
    if (m_engine.isRunning())
        m_engine.pause();
}

void AudioEngine::update(const Project& project) {
    if (m_core)
        m_core->update(compile(project));
}

std::int64_t AudioEngine::playheadTick() const {
    return m_isPlaying && m_core ? m_core->publishedTick() : -1;
}

bool AudioEngine::reachedEnd() const {
    return m_core && m_core->isFinished();
}

} // namespace mossbit
