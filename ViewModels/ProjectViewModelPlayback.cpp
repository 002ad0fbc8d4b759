#include "ViewModels/ProjectViewModel.h"

namespace mossbit {

namespace {
/// About sixty times a second.
constexpr std::chrono::milliseconds playheadInterval{16};
constexpr const char* noSound = "Could not start the audio engine.";
} // namespace

void ProjectViewModel::play() {
    m_audio.play(m_project);
    assign(m_isPlaying, m_audio.isPlaying(), &ProjectViewModel::isPlayingChanged);
    if (!m_isPlaying) {
        clearPlayhead();
        setAlertMessage(noSound);
        return;
    }
    m_playheadTimer = m_services.mainLoop.every(playheadInterval, [this] { tick(); });
}

void ProjectViewModel::stop() {
    m_audio.stop();
    assign(m_isPlaying, false, &ProjectViewModel::isPlayingChanged);
    clearPlayhead();
}

void ProjectViewModel::clearPlayhead() {
    assign<std::int64_t>(m_playhead, -1, &ProjectViewModel::playheadChanged);
    m_playheadTimer.reset();
}

void ProjectViewModel::tick() {
    if (!m_isPlaying)
        return;
    if (!m_project.loop && m_audio.reachedEnd()) {
        stop();
        return;
    }
    if (m_audio.hasLostOutput()) {
        stop();
        setAlertMessage(noSound);
        return;
    }
    assign(m_playhead, m_audio.playheadTick(), &ProjectViewModel::playheadChanged);
}

} // namespace mossbit
