#pragma once

#include "Audio/RenderPattern.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace mossbit {

/// The synthesizer written down plainly, one sample after the other, with nothing shared with the
/// real one but the compiled pattern: what every faster way of rendering must equal bit for bit.
class PlainRenderer {
public:
    PlainRenderer(const RenderPattern& pattern, double sampleRate)
        : m_pattern(pattern),
          m_rate(sampleRate),
          m_rate32(static_cast<float>(sampleRate)),
          m_coefficient(0.007957748F / (1.0F / m_rate32 + 0.007957748F)),
          m_tones(std::min<std::size_t>(pattern.channels.size(), 4)) {}

    std::vector<float> render(std::size_t frames) {
        std::vector<float> samples(frames);
        std::generate(samples.begin(), samples.end(), [this] { return next(); });
        return samples;
    }

private:
    enum Stage { idle, attack, decay, sustain, release };

    struct Tone {
        Stage stage = idle;
        float level = 0, attackStep = 0, decayStep = 0, releaseStep = 0, sustainLevel = 0;
        bool isDrum = false;
        std::int64_t endTick = 0;
        float gain = 0, phase = 0, increment = 0;
        unsigned lfsr = 0;
        float lfsrPhase = 0, lfsrRate = 0, lfsrTarget = 0, lfsrStep = 0;
        bool shortMode = false;
        float noise = -1;
    };

    float next() {
        if (m_untilTick <= 0) {
            startTick();
            m_untilTick += m_rate * (60 / m_pattern.tempo * 0.25);
        }
        m_untilTick -= 1;
        float mix = 0;
        for (std::size_t i = 0; i < m_tones.size(); ++i) {
            const float sample = step(m_tones[i], m_pattern.channels[i]);
            if (!m_pattern.channels[i].muted)
                mix += sample * m_pattern.channels[i].level;
        }
        const float x = mix * 0.22F;
        m_y = m_coefficient * (m_y + x - m_x);
        m_x = x;
        return std::clamp(m_y, -1.0F, 1.0F);
    }

    void startTick() {
        const bool isOver = ++m_tick >= m_pattern.totalTicks;
        if (isOver)
            m_tick = m_pattern.loop ? 0 : m_pattern.totalTicks;
        for (std::size_t i = 0; i < m_tones.size(); ++i) {
            Tone& tone = m_tones[i];
            if ((isOver || m_tick >= tone.endTick) && tone.stage != idle && !tone.isDrum)
                tone.stage = release;
            if (m_tick == m_pattern.totalTicks)
                continue;
            const RenderChannel& channel = m_pattern.channels[i];
            const auto event = channel.startAtTick[static_cast<std::size_t>(m_tick)];
            if (event >= 0)
                start(tone, channel.kind, channel.events[static_cast<std::size_t>(event)]);
        }
    }

    float stepFor(float seconds) const { return 1 / std::fmax(seconds * m_rate32, 1.0F); }

    void start(Tone& tone, ChannelKind kind, const RenderEvent& event) const {
        tone.stage = attack;
        tone.endTick = event.end;
        tone.isDrum = kind == ChannelKind::noise;
        if (tone.isDrum)
            return startDrum(tone, event);
        const float exponent = static_cast<float>(event.pitch - 69) / 12.0F;
        tone.increment = std::pow(2.0F, exponent) * 440.0F / m_rate32;
        tone.phase = 0;
        tone.gain = event.velocity;
        tone.attackStep = stepFor(0.004F);
        tone.decayStep = stepFor(kind == ChannelKind::wave ? 0.35F : 0.25F);
        tone.releaseStep = stepFor(0.03F);
        tone.sustainLevel = kind == ChannelKind::wave ? 0.8F : 0.72F;
    }

    void startDrum(Tone& tone, const RenderEvent& event) const {
        struct Drum {
            float factor, decay, from, to, sweep;
        };
        constexpr std::array<Drum, 4> drums = {{{1.0F, 0.13F, 2400, 420, 0.045F},
                                                {0.85F, 0.16F, 11000, 7000, 0.08F},
                                                {0.6F, 0.045F, 34000, 34000, 0.01F},
                                                {0.8F, 0.3F, 6000, 6000, 0.01F}}};
        const std::int64_t row = event.pitch >= 0 && event.pitch <= 2 ? event.pitch : 3;
        const Drum& drum = drums[static_cast<std::size_t>(row)];
        tone.lfsr = 0x7FFF;
        tone.lfsrPhase = 0;
        tone.lfsrRate = drum.from;
        tone.lfsrTarget = drum.to;
        tone.lfsrStep = (drum.to - drum.from) / std::fmax(drum.sweep * m_rate32, 1.0F);
        tone.shortMode = event.pitch == 2;
        tone.gain = event.velocity * drum.factor;
        tone.attackStep = stepFor(0.001F);
        tone.decayStep = stepFor(drum.decay);
        tone.sustainLevel = 0;
    }

    /// Moves `value` by one step; true once that has reached the end, which it does not pass.
    static bool reaches(float end, float step, float& value) {
        value += step;
        const bool isThere = step < 0 ? value <= end : value >= end;
        if (isThere)
            value = end;
        return isThere;
    }

    float step(Tone& tone, const RenderChannel& channel) const {
        if (tone.stage == attack) {
            if (reaches(1, tone.attackStep, tone.level))
                tone.stage = decay;
        } else if (tone.stage == decay) {
            if (reaches(tone.sustainLevel, -tone.decayStep, tone.level))
                tone.stage = tone.isDrum ? idle : sustain;
        } else if (tone.stage == release) {
            if (reaches(0, -tone.releaseStep, tone.level))
                tone.stage = idle;
        }
        if (tone.level <= 0)
            return 0;
        if (tone.isDrum)
            return tone.level * hiss(tone) * tone.gain;
        tone.phase += tone.increment;
        tone.phase -= std::floor(tone.phase);
        if (channel.kind == ChannelKind::wave) {
            const auto index = static_cast<std::size_t>(tone.phase * 32);
            return tone.level * channel.table[std::min<std::size_t>(index, 31)] * tone.gain;
        }
        return (tone.phase < channel.duty ? tone.level : -tone.level) * tone.gain;
    }

    float hiss(Tone& tone) const {
        if (reaches(tone.lfsrTarget, tone.lfsrStep, tone.lfsrRate))
            tone.lfsrStep = 0;
        tone.lfsrPhase += tone.lfsrRate / m_rate32;
        for (; tone.lfsrPhase >= 1; tone.lfsrPhase -= 1) {
            const unsigned feedback = (tone.lfsr & 1) ^ (tone.lfsr >> 1 & 1);
            tone.lfsr = tone.lfsr >> 1 | feedback << 14;
            if (tone.shortMode)
                tone.lfsr = (tone.lfsr & ~0x40U) | feedback << 6;
            tone.noise = (tone.lfsr & 1) != 0 ? -1.0F : 1.0F;
        }
        return tone.noise;
    }

    const RenderPattern& m_pattern;
    double m_rate;
    float m_rate32;
    float m_coefficient;
    std::vector<Tone> m_tones;
    std::int64_t m_tick = -1;
    double m_untilTick = 0;
    float m_x = 0;
    float m_y = 0;
};

} // namespace mossbit
