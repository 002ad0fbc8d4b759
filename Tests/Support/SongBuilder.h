#pragma once

#include "Models/Project.h"

#include <cstdint>
#include <utility>

namespace mossbit {

/// Builds a project for a test: `song({.bars = 1}).note(60, 0, 4).on(ChannelKind::noise).note(0, 4,
/// 1)`.
struct SongBuilder : Project {
    explicit SongBuilder(Project project) : Project(std::move(project)) {}

    /// The channel that the following calls are about; the first pulse channel at the beginning.
    SongBuilder& on(ChannelKind kind) {
        m_channel = static_cast<std::size_t>(kind);
        return *this;
    }

    SongBuilder& note(std::int64_t pitch, std::int64_t start, std::int64_t length,
                      std::int64_t velocity = 15) {
        channels[m_channel].notes.push_back(
            {.pitch = pitch, .start = start, .length = length, .velocity = velocity});
        return *this;
    }

    SongBuilder& muted() {
        channels[m_channel].muted = true;
        return *this;
    }

private:
    std::size_t m_channel = 0;
};

inline SongBuilder song(Project project = {}) {
    return SongBuilder(std::move(project));
}

/// The busiest song there is: 16 bars and a note of one tick on every tick of every channel, going
/// through all pitches and drums.
inline Project fullSong(std::int64_t tempo = 120) {
    Project project;
    project.tempo = tempo;
    project.bars = 16;
    for (Channel& channel : project.channels) {
        const bool drums = channel.kind == ChannelKind::noise;
        for (std::int64_t tick = 0; tick < project.totalTicks(); ++tick)
            channel.notes.push_back(
                {.pitch = drums ? tick % 4 : PitchRange::lowest + tick * 7 % 61, .start = tick});
    }
    return project;
}

} // namespace mossbit
