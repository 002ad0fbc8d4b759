#pragma once

#include "Models/Project.h"

#include <cstdint>
#include <vector>

namespace mossbit {

/// A note, ready to be played.
struct RenderEvent {
    /// First tick of the note.
    std::int64_t start = 0;
    /// First tick after the note, at most the pattern's `totalTicks`.
    std::int64_t end = 0;
    /// A semitone, or the raw value of a `NoiseVoiceKind` on the noise channel.
    std::int64_t pitch = 0;
    /// 0 … 1.
    float velocity = 0;
};

/// A channel, compiled for a pattern of a given length.
struct RenderChannel {
    /// `totalTicks` is at least 1.
    RenderChannel(const Channel& channel, std::int64_t totalTicks);

    ChannelKind kind;
    /// 0 … 1.
    float level;
    bool muted;
    /// The fraction of its period that a pulse is high; heard on the pulse channels only.
    float duty;
    /// One period of the wave channel in 32 entries of −1 … 1; empty on the other channels.
    std::vector<float> table;
    /// The notes that start inside the pattern, sorted by start, clipped to its end.
    std::vector<RenderEvent> events;
    /// For each tick the index of the event that starts on it, or −1. Of several notes on one tick
    /// the one stored last in the channel sounds.
    std::vector<std::int64_t> startAtTick;
};

/// A song as the audio thread reads it: immutable, shared by the thread that compiled it and the
/// thread that plays it.
struct RenderPattern {
    explicit RenderPattern(const Project& project);

    /// Beats per minute.
    double tempo;
    /// At least 1.
    std::int64_t totalTicks;
    bool loop;
    std::vector<RenderChannel> channels;
};

} // namespace mossbit
