#pragma once

#include "Models/Project.h"

namespace mossbit {

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
