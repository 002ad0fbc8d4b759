#pragma once

#include "Audio/ChipCore.h"
#include "Models/Project.h"
#include "Platform/AudioOutput.h"
#include "Platform/SystemLog.h"

#include <cstdint>
#include <memory>

namespace mossbit {

/// Connects a chip core to the sound device. Main thread only; the device pulls the core's samples
/// on its own thread.
class AudioEngine {
public:
    AudioEngine(AudioOutput& engine, SystemLog log);
    ~AudioEngine();
    AudioEngine(const AudioEngine&) = delete;
    AudioEngine& operator=(const AudioEngine&) = delete;

    /// Makes the core and connects it to the device; does nothing the next times.
    void prepare(const Project& project);

    /// Plays from tick 0. If the device does not start, logs one line and stays stopped.
    void play(const Project& project);
    void stop();

    /// Lets a changed song be heard from the next block on; the position stays.
    void update(const Project& project);

    bool isPlaying() const { return m_isPlaying; }

    /// The tick being heard; −1 when stopped.
    std::int64_t playheadTick() const;

    /// Whether a song that does not loop has ended and faded out.
    bool reachedEnd() const;

    /// Whether the device stopped by itself while playing, and none came in its place.
    bool hasLostOutput() const { return m_isPlaying && !m_engine.isRunning(); }

private:
    AudioOutput& m_engine;
    SystemLog m_log;
    /// Shared with the source that the output calls, so that the core outlives a call under way.
    std::shared_ptr<ChipCore> m_core;
    bool m_isPlaying = false;
};

} // namespace mossbit
