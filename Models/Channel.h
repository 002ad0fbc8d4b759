#pragma once

#include "Models/Note.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace mossbit {

// The order of each enumeration's cases is the order in which pickers and legends show them.

enum class ChannelKind : std::uint8_t { pulse1, pulse2, wave, noise };

/// The fraction of its period that a pulse is high: 12.5 %, 25 %, 50 %, 75 %. The number is the
/// raw value in files.
enum class Duty : std::uint8_t { d125 = 0, d25 = 1, d50 = 2, d75 = 3 };

enum class WavePreset : std::uint8_t { triangle, soft, hollow };

/// What a pitch means on the noise channel.
enum class NoiseVoiceKind : std::uint8_t { kick = 0, snare = 1, hat = 2, noise = 3 };

inline constexpr std::array allChannelKinds = {ChannelKind::pulse1, ChannelKind::pulse2,
                                               ChannelKind::wave, ChannelKind::noise};
inline constexpr std::array allDuties = {Duty::d125, Duty::d25, Duty::d50, Duty::d75};
inline constexpr std::array allWavePresets = {WavePreset::triangle, WavePreset::soft,
                                              WavePreset::hollow};
inline constexpr std::array allNoiseVoiceKinds = {NoiseVoiceKind::kick, NoiseVoiceKind::snare,
                                                  NoiseVoiceKind::hat, NoiseVoiceKind::noise};

/// The raw value in files: "pulse1", "pulse2", "wave" or "noise".
std::string_view rawValue(ChannelKind kind);

/// The raw value in files: "triangle", "soft" or "hollow".
std::string_view rawValue(WavePreset preset);

constexpr std::int64_t rawValue(Duty duty) {
    return static_cast<std::int64_t>(duty);
}

/// One sound source of the chip with its settings and notes. Every channel carries all fields;
/// `duty` is heard on the pulse channels only, `wave` on the wave channel only.
struct Channel {
    ChannelKind kind = ChannelKind::pulse1;
    /// 0 … 15.
    std::int64_t volume = 11;
    bool muted = false;
    Duty duty = Duty::d50;
    WavePreset wave = WavePreset::triangle;
    /// In the order in which they were added; not sorted, and notes may overlap.
    std::vector<Note> notes = {};

    bool operator==(const Channel&) const = default;
};

} // namespace mossbit
