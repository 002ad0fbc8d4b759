#pragma once

#include "Audio/Envelope.h"
#include "Audio/RenderPattern.h"
#include "Models/Channel.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mossbit {

/// What the sum of the voices is multiplied by: four at full level come to at most 0.88.
inline constexpr float masterGain = 0.22F;

inline constexpr std::size_t waveTableLength = 32;

/// One period of a wave preset: 32 entries of −1 … 1, each one of 16 levels.
std::vector<float> waveTable(WavePreset preset);

/// Where every drum starts its noise: all 15 bits set.
inline constexpr std::uint16_t lfsrSeed = 0x7FFF;

/// The noise register after one clock. It repeats every 32767 clocks; in short mode, which feeds
/// back into bit 6 as well, every 127, which sounds metallic.
constexpr std::uint16_t clockedRegister(std::uint16_t lfsr, bool shortMode) {
    const unsigned feedback = (lfsr ^ (lfsr >> 1U)) & 1U;
    const unsigned shifted = (lfsr >> 1U) | feedback << 14U;
    const unsigned clocked = shortMode ? (shifted & ~(1U << 6U)) | feedback << 6U : shifted;
    return static_cast<std::uint16_t>(clocked);
}

/// One oscillator with its envelope and the note that it plays. Which oscillator it is depends on
/// the kind of the channel that drives it.
struct Voice {
    Envelope envelope;
    /// The tick at which the note is released.
    std::int64_t endTick = 0;
    /// Velocity 0 … 1, times the drum's own factor on the noise channel.
    float gain = 1;
    /// Pulse and wave: position in the period, 0 ≤ phase < 1, and its advance per sample.
    float phase = 0;
    float increment = 0;
    /// Noise: a 15-bit feedback shift register, clocked whenever `lfsrPhase` reaches 1.
    std::uint16_t lfsr = lfsrSeed;
    float lfsrPhase = 0;
    /// Clocks per second, where its sweep ends, and its change per sample; 0 for no sweep.
    float lfsrRate = 0;
    float lfsrTargetRate = 0;
    float lfsrRateStep = 0;
    bool shortMode = false;
    /// +1 or −1, held between clocks.
    float lastNoiseSample = -1;

    /// `sampleRate` in Hz, here and below.
    void noteOn(const RenderChannel& channel, const RenderEvent& event, float sampleRate);

    /// Drums ignore it and fade out by themselves.
    void noteOff() { envelope.release(); }

    void silence() { envelope.silence(); }

    bool isIdle() const { return envelope.stage == Envelope::Stage::idle; }

    /// Advances a voice that is not idle by one sample and returns it, before the channel's level.
    float nextSample(const RenderChannel& channel, float sampleRate);

private:
    float nextNoise(float sampleRate);
};

} // namespace mossbit
