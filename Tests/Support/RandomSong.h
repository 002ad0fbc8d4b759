#pragma once

#include "Models/Project.h"

#include <random>

namespace mossbit {

/// A song that a person could have made: every setting within its limits, overlapping notes,
/// muted channels, all drums. The same seed gives the same song on every system.
inline Project randomSong(std::mt19937& random) {
    // Not std::uniform_int_distribution, which differs between standard libraries.
    const auto below = [&](std::int64_t count) {
        return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(count));
    };
    Project project;
    project.tempo = lowestTempo + below(highestTempo - lowestTempo + 1);
    project.bars = allBarCounts[static_cast<std::size_t>(below(3))];
    project.loop = below(2) == 0;
    for (Channel& channel : project.channels) {
        channel.volume = below(highestVolume + 1);
        channel.muted = below(6) == 0;
        channel.duty = allDuties[static_cast<std::size_t>(below(4))];
        channel.wave = allWavePresets[static_cast<std::size_t>(below(3))];
        const std::int64_t count = below(40);
        const bool drums = channel.kind == ChannelKind::noise;
        for (std::int64_t i = 0; i < count; ++i)
            channel.notes.push_back(
                {.pitch = drums ? below(4) : PitchRange::lowest + below(61),
                 .start = below(project.totalTicks()),
                 .length = 1 + below(9),
                 .velocity = below(4) == 0 ? below(highestVelocity + 1) : highestVelocity});
    }
    project.clampNotes();
    return project;
}

} // namespace mossbit
