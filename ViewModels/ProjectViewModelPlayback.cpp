#include "ViewModels/ProjectViewModel.h"

namespace mossbit {

namespace {
/// About sixty times a second.
constexpr std::chrono::milliseconds playheadInterval{16};
} // namespace

void ProjectViewModel::play() {
    m_audio.play(m_project);
    if (!m_audio.isPlaying()) {
        stopWithoutSound();
        return;
    }
    assign(m_isPlaying, true, &ProjectViewModel::isPlayingChanged);
    tickLater();
}

void ProjectViewModel::tickLater() {
    m_playheadTimer = m_services.mainLoop.after(playheadInterval, [this] { tick(); });
}

void ProjectViewModel::stop() {
    m_audio.stop();
    assign(m_isPlaying, false, &ProjectViewModel::isPlayingChanged);
    assign<std::int64_t>(m_playhead, -1, &ProjectViewModel::playheadChanged);
    m_playheadTimer.reset();
}

void ProjectViewModel::stopWithoutSound() {
    stop();
    setAlertMessage("Could not start the audio engine.");
}

void ProjectViewModel::tick() {
    if (!m_project.loop && m_audio.reachedEnd()) {
        stop();
    } else if (m_audio.hasLostOutput()) {
        stopWithoutSound();
    } else {
        tickLater();
        assign(m_playhead, m_audio.playheadTick(), &ProjectViewModel::playheadChanged);
    }
}

} // namespace mossbit
