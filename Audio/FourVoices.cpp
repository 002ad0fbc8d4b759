#include "Audio/FourVoices.h"

#include "Audio/Vectors.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace mossbit {

namespace {

constexpr std::size_t groupFrames = 4;
constexpr std::size_t noiseLane = 3;

/// The noise register, up to four clocks at a time. It has no branches, because a processor could
/// not predict whether a sample clocks it.
class NoiseRegister {
public:
    explicit NoiseRegister(const Voice& voice)
        : m_lfsr(voice.lfsr),
          m_held(voice.lastNoiseSample < 0 ? 1 : 0),
          m_shortMode(voice.shortMode) {}

    void store(Voice& voice) const {
        voice.lfsr = static_cast<std::uint16_t>(m_lfsr);
        voice.lastNoiseSample = m_held != 0 ? -1.0F : 1.0F;
    }

    /// The signs of four samples. `clocks` is odd where the register is clocked before the sample.
    Ints signs(const std::array<unsigned, groupFrames>& clocks) {
        // Bit k is the output after k clocks: the next four stand in the register already.
        unsigned outputs = (m_lfsr & ~1U) | m_held;
        unsigned count = 0;
        std::array<std::int32_t, groupFrames> signs;
        for (std::size_t i = 0; i < groupFrames; ++i) {
            outputs >>= clocks[i] & 1U;
            count += clocks[i] & 1U;
            signs[i] = static_cast<std::int32_t>(outputs << 31U);
        }
        m_held = outputs & 1U;
        clock(count);
        return Ints{signs[0], signs[1], signs[2], signs[3]};
    }

private:
    /// `count` times `clockedRegister`, for at most four.
    void clock(unsigned count) {
        const unsigned entering = (1U << count) - 1;
        const unsigned feedback = (m_lfsr ^ m_lfsr >> 1U) & entering;
        m_lfsr = m_lfsr >> count | feedback << (15 - count);
        if (m_shortMode)
            m_lfsr = (m_lfsr & ~(entering << (7 - count))) | feedback << (7 - count);
    }

    unsigned m_lfsr;
    /// The output now: 1 for −1, 0 for +1. Not always the lowest bit: a new note sets the register
    /// and leaves the output until the next clock.
    unsigned m_held;
    bool m_shortMode;
};

/// A group of samples before they are mixed: one vector per voice with a lane per sample.
struct Group {
    Square level;
    Square phase;
    std::array<unsigned, groupFrames> clocks;
};

/// The voices' state between two events, one lane per voice. The lane of an idle voice is constant.
struct Lanes {
    // Counts upwards in every stage, so that one comparison finds the end of any of them: in a
    // stage that falls, `direction` is −1 and so is the sign of the level.
    Floats level{};
    Floats levelStep{};
    Floats levelEnd = all(std::numeric_limits<float>::infinity());
    Floats direction = all(1);
    // Position in the period, or towards the next clock of the noise register.
    Floats phase{};
    Floats increment{};
    // `increment` is `rate` / `rateUnit`. The sweep changes the noise lane's rate, which is in Hz;
    // the unit of the other lanes is 1.
    Floats rate{};
    Floats rateStep{};
    Floats rateUnit = all(1);
    float sweepEnd = 0;

    Lanes(const std::array<Voice, 4>& voices, float sampleRate);
    void load(std::size_t lane, const Voice& voice, float sampleRate);
    void store(std::size_t lane, Voice& voice) const;

    bool isSweeping() const { return rateStep[noiseLane] != 0; }

    /// Moves on by one group, unless a stage or the sweep would end in it.
    template <bool sweeping>
    bool advance(Group& group);
};

Lanes::Lanes(const std::array<Voice, 4>& voices, float sampleRate) {
    for (std::size_t lane = 0; lane < voices.size(); ++lane)
        load(lane, voices[lane], sampleRate);
    increment = rate / rateUnit;
}

void Lanes::load(std::size_t lane, const Voice& voice, float sampleRate) {
    if (voice.isIdle())
        return;
    const Envelope& envelope = voice.envelope;
    const auto fall = [&](float step, float floor) {
        direction[lane] = -1;
        levelStep[lane] = step;
        levelEnd[lane] = -floor;
    };
    if (envelope.stage == Envelope::Stage::attack) {
        levelStep[lane] = envelope.attackStep;
        levelEnd[lane] = 1;
    } else if (envelope.stage == Envelope::Stage::decay) {
        fall(envelope.decayStep, envelope.decayFloor());
    } else if (envelope.stage == Envelope::Stage::release) {
        fall(envelope.releaseStep, 0);
    }
    level[lane] = envelope.level * direction[lane];
    phase[lane] = voice.phase;
    rate[lane] = voice.increment;
    if (lane == noiseLane) {
        phase[lane] = voice.lfsrPhase;
        rate[lane] = voice.lfsrRate;
        rateStep[lane] = voice.lfsrRateStep;
        rateUnit[lane] = sampleRate;
        sweepEnd = voice.lfsrTargetRate;
    }
}

void Lanes::store(std::size_t lane, Voice& voice) const {
    if (voice.isIdle())
        return;
    voice.envelope.level = level[lane] * direction[lane];
    (lane == noiseLane ? voice.lfsrPhase : voice.phase) = phase[lane];
    if (lane == noiseLane)
        voice.lfsrRate = rate[lane];
}

template <bool sweeping>
inline bool Lanes::advance(Group& group) {
    Square levels;
    levels[0] = level + levelStep;
    for (std::size_t i = 1; i < groupFrames; ++i)
        levels[i] = levels[i - 1] + levelStep;
    if (any(levels[groupFrames - 1] >= levelEnd))
        return false;
    Square increments = {increment, increment, increment, increment};
    if constexpr (sweeping) {
        Floats newRate = rate;
        for (Floats& swept : increments) {
            newRate += rateStep;
            swept = newRate / rateUnit;
        }
        // No drum's sweep rises.
        if (newRate[noiseLane] <= sweepEnd)
            return false;
        rate = newRate;
    }
    Square phases;
    for (std::size_t i = 0; i < groupFrames; ++i) {
        phase += increments[i];
        const Ints wraps = phase >= all(1);
        phase -= where(wraps, all(1));
        phases[i] = phase;
        group.clocks[i] = lowBits(wraps, noiseLane);
    }
    level = levels[groupFrames - 1];
    group.level = transposed(levels);
    group.phase = transposed(phases);
    return true;
}

/// Mixes the chip's two pulses, its wave and its noise, with the settings that hold between two
/// events.
class Mixer {
public:
    Mixer(const std::vector<RenderChannel>& channels, const std::array<Voice, 4>& voices,
          Floats direction)
        : m_duty0(all(channels[0].duty)),
          m_duty1(all(channels[1].duty)),
          m_table(channels[2].table.data()) {
        for (std::size_t i = 0; i < voices.size(); ++i) {
            m_gain[i] = all(voices[i].gain * direction[i]);
            m_volume[i] = all(channels[i].muted ? 0 : channels[i].level);
        }
    }

    /// Four samples of all voices, summed in the order of the channels.
    Floats mixed(const Group& group, NoiseRegister& noise) const {
        const Square& level = group.level;
        const Square& phase = group.phase;
        const Ints entry = __builtin_convertvector(phase[2] * all(waveTableLength), Ints);
        const Floats wave = {m_table[lowBits(entry, 0)], m_table[lowBits(entry, 1)],
                             m_table[lowBits(entry, 2)], m_table[lowBits(entry, 3)]};
        Floats mix = all(0);
        mix += withSigns(level[0], phase[0] >= m_duty0) * m_gain[0] * m_volume[0];
        mix += withSigns(level[1], phase[1] >= m_duty1) * m_gain[1] * m_volume[1];
        mix += level[2] * wave * m_gain[2] * m_volume[2];
        mix += withSigns(level[3], noise.signs(group.clocks)) * m_gain[3] * m_volume[3];
        return mix * all(masterGain);
    }

private:
    Floats m_duty0;
    Floats m_duty1;
    const float* m_table;
    Square m_gain;
    Square m_volume;
};

/// Filters and clamps four samples in place. Denormals and overshoots are rare, so they are looked
/// for afterwards, off the chain from output to output, whose latency bounds the speed of
/// rendering.
inline void filterGroup(HighPass& filter, float* samples) {
    const std::array<float, groupFrames> x = {samples[0], samples[1], samples[2], samples[3]};
    const float y0 = filter.coefficient * (filter.y + x[0] - filter.x);
    const float y1 = filter.coefficient * (y0 + x[1] - x[0]);
    const float y2 = filter.coefficient * (y1 + x[2] - x[1]);
    const float y3 = filter.coefficient * (y2 + x[3] - x[2]);
    const Floats y = {y0, y1, y2, y3};
    const Floats size = magnitude(y);
    const Ints denormal = (size < all(std::numeric_limits<float>::min())) & (size > all(0));
    if (any(denormal | (size > all(1)))) [[unlikely]] {
        for (std::size_t i = 0; i < groupFrames; ++i)
            samples[i] = std::clamp(filter.next(x[i]), -1.0F, 1.0F);
        return;
    }
    std::memcpy(samples, &y, sizeof y);
    filter.x = x[3];
    filter.y = y3;
}

/// Renders groups until `into` is full or an event falls into the next one; returns the frames
/// written.
template <bool sweeping>
std::size_t renderGroups(Lanes lanes, std::array<Voice, 4>& voices,
                         const std::vector<RenderChannel>& channels, HighPass& highPass,
                         std::span<float> into) {
    // The filter lags two groups behind the mix, so that the reorder buffer overlaps both chains.
    constexpr std::size_t lag = 2 * groupFrames;
    const Mixer mixer(channels, voices, lanes.direction);
    NoiseRegister noise(voices[noiseLane]);
    // A local copy can stay in registers, because `into` cannot alias it.
    HighPass filter = highPass;
    Group group;
    std::size_t done = 0;
    for (; done + groupFrames <= into.size() && lanes.advance<sweeping>(group);
         done += groupFrames) {
        if (done >= lag)
            filterGroup(filter, into.data() + done - lag);
        const Floats mix = mixer.mixed(group, noise);
        std::memcpy(into.data() + done, &mix, sizeof mix);
    }
    for (std::size_t at = done - std::min(done, lag); at < done; at += groupFrames)
        filterGroup(filter, into.data() + at);
    for (std::size_t lane = 0; lane < voices.size(); ++lane)
        lanes.store(lane, voices[lane]);
    noise.store(voices[noiseLane]);
    highPass = filter;
    return done;
}

} // namespace

std::size_t mixUndisturbed(std::array<Voice, 4>& voices, const RenderPattern& pattern,
                           float sampleRate, HighPass& highPass, std::span<float> into) {
    if (!std::ranges::equal(pattern.channels, allChannelKinds, {}, &RenderChannel::kind))
        return 0;
    const Lanes lanes(voices, sampleRate);
    if (any(lanes.increment >= all(1)))
        return 0;
    return lanes.isSweeping()
               ? renderGroups<true>(lanes, voices, pattern.channels, highPass, into)
               : renderGroups<false>(lanes, voices, pattern.channels, highPass, into);
}

} // namespace mossbit
