#pragma once

#include "Models/Uuid.h"

#include <cstdint>
#include <string>

namespace mossbit {

/// One note of a channel. Times are ticks; a tick is a sixteenth note.
struct Note {
    /// Selection and editing refer to a note by its identifier; a new note gets a random one.
    Uuid id = Uuid::random();
    /// Melodic channels: a semitone, 36 … 96, 69 being A at 440 Hz. Noise channel: the raw value
    /// of a `NoiseVoiceKind`.
    std::int64_t pitch = 60;
    /// First tick, 0 … bars × 16 − 1.
    std::int64_t start = 0;
    /// Ticks, at least 1; `start` + `length` is at most bars × 16.
    std::int64_t length = 1;
    /// Loudness 0 … 15. The model keeps any value; the renderer limits it.
    std::int64_t velocity = 15;

    bool operator==(const Note&) const = default;
};

namespace PitchRange {

inline constexpr std::int64_t lowest = 36;
inline constexpr std::int64_t highest = 96;

/// The name with its octave, sharps only: 60 is "C4", 61 is "C#4".
std::string name(std::int64_t pitch);

/// Whether the pitch is one of the five black keys of its octave.
bool isBlackKey(std::int64_t pitch);

} // namespace PitchRange

} // namespace mossbit
