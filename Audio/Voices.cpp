#include "Audio/Voices.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace mossbit {

namespace {

using WaveLevels = std::array<std::uint8_t, waveTableLength>;

/// In the order of `WavePreset`: a triangle, and sines of one and three periods, quantised to 16
/// levels. Stored, not computed: a level that lies close to the middle between two must not depend
/// on a system's own sine.
constexpr std::array<WaveLevels, 3> waveLevels = {{
    {0,  1,  2,  3,  4,  5,  6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
     15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5,  4,  3,  2,  1,  0},
    {8, 9, 10, 12, 13, 14, 14, 15, 15, 15, 14, 14, 13, 12, 10, 9,
     8, 6, 5,  3,  2,  1,  1,  0,  0,  0,  1,  1,  2,  3,  5,  6},
    {8, 10, 12, 13, 13, 13, 12, 11, 10, 11, 12, 13, 13, 13, 12, 10,
     8, 5,  3,  2,  2,  2,  3,  4,  5,  4,  3,  2,  2,  2,  3,  5},
}};

/// How a kind of note swells and fades; times in seconds.
struct EnvelopeShape {
    float attack;
    float decay;
    float sustainLevel;
    float release;
    bool percussive;
};

constexpr EnvelopeShape pulseShape = {0.004F, 0.25F, 0.72F, 0.03F, false};
constexpr EnvelopeShape waveShape = {0.004F, 0.35F, 0.8F, 0.03F, false};

struct Drum {
    float factor;
    /// Seconds.
    float decay;
    /// Clocks of the noise register per second, at the note's start and at the end of the sweep.
    float rate;
    float targetRate;
    /// Seconds.
    float sweepTime;
    bool shortMode;
};

/// In the order of `NoiseVoiceKind`: kick, snare, hat, noise.
constexpr std::array<Drum, 4> drums = {{
    {1.0F, 0.13F, 2400, 420, 0.045F, false},
    {0.85F, 0.16F, 11000, 7000, 0.08F, false},
    {0.6F, 0.045F, 34000, 34000, 0.01F, true},
    {0.8F, 0.3F, 6000, 6000, 0.01F, false},
}};

/// Pitches that are no drum's, below 0 too, give the plain noise.
const Drum& drumOf(std::int64_t pitch) {
    return drums[std::min(static_cast<std::uint64_t>(pitch), std::uint64_t{drums.size() - 1})];
}

/// How many samples a time in seconds lasts, at least one.
float samplesOf(float seconds, float sampleRate) {
    return std::max(seconds * sampleRate, 1.0F);
}

/// The frequency in Hz, rounded to single precision after every step.
float frequencyOf(std::int64_t pitch) {
    const float octaves = (static_cast<float>(pitch) - 69.0F) / 12.0F;
    // The power is taken in double precision and then rounded: systems' own single-precision
    // powers differ in the last bit.
    return static_cast<float>(std::exp2(static_cast<double>(octaves))) * 440.0F;
}

/// Everything but stage and level, which a new note takes over from the one before.
void setShape(Envelope& envelope, const EnvelopeShape& shape, float sampleRate) {
    envelope.attackStep = 1.0F / samplesOf(shape.attack, sampleRate);
    envelope.decayStep = 1.0F / samplesOf(shape.decay, sampleRate);
    envelope.releaseStep = 1.0F / samplesOf(shape.release, sampleRate);
    envelope.sustainLevel = shape.sustainLevel;
    envelope.percussive = shape.percussive;
}

float wrapped(float phase) {
    return phase >= 1 ? phase - std::floor(phase) : phase;
}

} // namespace

std::vector<float> waveTable(WavePreset preset) {
    std::vector<float> table;
    table.reserve(waveTableLength);
    for (const std::uint8_t level : waveLevels[static_cast<std::size_t>(preset)])
        table.push_back(static_cast<float>(level) / 15.0F * 2.0F - 1.0F);
    return table;
}

void Voice::noteOn(const RenderChannel& channel, const RenderEvent& event, float sampleRate) {
    endTick = event.end;
    if (channel.kind == ChannelKind::noise) {
        const Drum& drum = drumOf(event.pitch);
        // From the same seed, so that every hit of a drum sounds alike.
        lfsr = lfsrSeed;
        lfsrPhase = 0;
        lfsrRate = drum.rate;
        lfsrTargetRate = drum.targetRate;
        lfsrRateStep = (drum.targetRate - drum.rate) / samplesOf(drum.sweepTime, sampleRate);
        shortMode = drum.shortMode;
        gain = event.velocity * drum.factor;
        setShape(envelope, {0.001F, drum.decay, 0, 0.005F, true}, sampleRate);
    } else {
        increment = frequencyOf(event.pitch) / sampleRate;
        gain = event.velocity;
        phase = 0;
        setShape(envelope, channel.kind == ChannelKind::wave ? waveShape : pulseShape, sampleRate);
    }
    envelope.attack();
}

float Voice::nextSample(const RenderChannel& channel, float sampleRate) {
    envelope.advance();
    if (envelope.level <= 0)
        return 0;
    if (channel.kind == ChannelKind::noise)
        return envelope.level * nextNoise(sampleRate) * gain;
    phase = wrapped(phase + increment);
    if (channel.kind == ChannelKind::wave) {
        const auto index = static_cast<std::size_t>(phase * static_cast<float>(waveTableLength));
        return envelope.level * channel.table[std::min(index, waveTableLength - 1)] * gain;
    }
    return (phase < channel.duty ? envelope.level : -envelope.level) * gain;
}

float Voice::nextNoise(float sampleRate) {
    if (lfsrRateStep != 0) {
        lfsrRate += lfsrRateStep;
        if (lfsrRateStep < 0 ? lfsrRate <= lfsrTargetRate : lfsrRate >= lfsrTargetRate) {
            lfsrRate = lfsrTargetRate;
            lfsrRateStep = 0;
        }
    }
    lfsrPhase += lfsrRate / sampleRate;
    if (lfsrPhase >= 1) {
        do {
            lfsr = clockedRegister(lfsr, shortMode);
            lfsrPhase -= 1;
        } while (lfsrPhase >= 1);
        lastNoiseSample = (lfsr & 1) != 0 ? -1.0F : 1.0F;
    }
    return lastNoiseSample;
}

} // namespace mossbit
