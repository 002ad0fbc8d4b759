#pragma once

#include "Models/Channel.h"

#include <array>
#include <cstdint>
#include <vector>

namespace mossbit {

/// The editing grid; the number is the step in ticks and the raw value in files. Every step
/// divides a bar, so every bar line is a grid line.
enum class GridDivision : std::uint8_t { quarter = 4, eighth = 2, sixteenth = 1 };

inline constexpr std::array allGridDivisions = {GridDivision::quarter, GridDivision::eighth,
                                                GridDivision::sixteenth};

constexpr std::int64_t rawValue(GridDivision division) {
    return static_cast<std::int64_t>(division);
}

inline constexpr std::int64_t ticksPerBeat = 4;
inline constexpr std::int64_t ticksPerBar = 16;
inline constexpr std::int64_t lowestTempo = 40;
inline constexpr std::int64_t highestTempo = 300;
inline constexpr std::int64_t highestVolume = 15;
inline constexpr std::int64_t highestVelocity = 15;
inline constexpr std::array<std::int64_t, 5> allBarCounts = {1, 2, 4, 8, 16};

/// The song document: a plain value, copied for undo, for compiling and for saving.
struct Project {
    std::int64_t version = 1;
    /// Beats (quarter notes) per minute, 40 … 300.
    std::int64_t tempo = 120;
    /// One of `allBarCounts`.
    std::int64_t bars = 4;
    GridDivision grid = GridDivision::sixteenth;
    bool loop = true;
    /// Exactly four, in the order pulse1, pulse2, wave, noise; a channel's index is its place here.
    std::vector<Channel> channels = defaultChannels();

    static std::vector<Channel> defaultChannels();

    std::int64_t totalTicks() const { return bars * ticksPerBar; }

    /// The editing grid's step in ticks.
    std::int64_t gridStep() const { return rawValue(grid); }

    bool hasNotes() const;

    /// Brings every note inside the pattern: starts below 0 are raised, lengths are cut at the end
    /// and at least 1; notes that start past the end or lie outside their channel's pitches are
    /// dropped. Order, identifiers and velocities stay.
    void clampNotes();

    bool operator==(const Project&) const = default;
};

} // namespace mossbit
