#pragma once

#include "Audio/RenderPattern.h"

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
          m_coefficient(0.007957748F / (1.0F / m_rate32 + 0.007957748F)) {}

    std::vector<float> render(std::size_t frames) {
        std::vector<float> samples;
        for (std::size_t i = 0; i < frames; ++i)
            samples.push_back(next());
        return samples;
    }

private:
    enum Stage { idle, attack, decay, sustain, release };

    struct Tone {
        Stage stage = idle;
        float level = 0, attackStep = 1, decayStep = 0, releaseStep = 1, sustainLevel = 1;
        bool percussive = false;
        std::int64_t endTick = 0;
        float gain = 1, phase = 0, increment = 0;
        unsigned lfsr = 0x7FFF;
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
        for (std::size_t i = 0; i < m_pattern.channels.size() && i < 4; ++i) {
            if (m_tones[i].stage == idle)
                continue;
            const float sample = step(m_tones[i], m_pattern.channels[i]);
            if (!m_pattern.channels[i].muted)
                mix += sample * m_pattern.channels[i].level;
        }
        const float x = mix * 0.22F;
        const float y = m_coefficient * (m_y + x - m_x);
        m_x = x;
        m_y = y;
        return y < -1 ? -1 : y > 1 ? 1 : y;
    }

    void startTick() {
        const std::int64_t tick = ++m_tick;
        const bool over = tick >= m_pattern.totalTicks;
        if (over && !m_pattern.loop) {
            m_tick = m_pattern.totalTicks;
            for (Tone& tone : m_tones)
                letGo(tone);
            return;
        }
        if (over)
            m_tick = 0;
        for (std::size_t i = 0; i < m_pattern.channels.size() && i < 4; ++i) {
            const RenderChannel& channel = m_pattern.channels[i];
            if (over || m_tick >= m_tones[i].endTick)
                letGo(m_tones[i]);
            const auto event = channel.startAtTick[static_cast<std::size_t>(m_tick)];
            if (event >= 0)
                start(m_tones[i], channel.kind, channel.events[static_cast<std::size_t>(event)]);
        }
    }

    static void letGo(Tone& tone) {
        if (tone.stage != idle && !tone.percussive)
            tone.stage = release;
    }

    float stepFor(float seconds) const { return 1 / std::fmax(seconds * m_rate32, 1.0F); }

    void start(Tone& tone, ChannelKind kind, const RenderEvent& event) const {
        tone.endTick = event.end;
        tone.stage = attack;
        if (kind != ChannelKind::noise) {
            const float exponent = static_cast<float>(event.pitch - 69) / 12.0F;
            tone.increment = std::pow(2.0F, exponent) * 440.0F / m_rate32;
            tone.phase = 0;
            tone.gain = event.velocity;
            tone.attackStep = stepFor(0.004F);
            tone.decayStep = stepFor(kind == ChannelKind::wave ? 0.35F : 0.25F);
            tone.releaseStep = stepFor(0.03F);
            tone.sustainLevel = kind == ChannelKind::wave ? 0.8F : 0.72F;
            tone.percussive = false;
            return;
        }
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
        tone.releaseStep = stepFor(0.005F);
        tone.sustainLevel = 0;
        tone.percussive = true;
    }

    float step(Tone& tone, const RenderChannel& channel) const {
        if (tone.stage == attack) {
            tone.level += tone.attackStep;
            if (tone.level >= 1) {
                tone.level = 1;
                tone.stage = tone.percussive || tone.sustainLevel < 1 ? decay : sustain;
            }
        } else if (tone.stage == decay) {
            const float floor = tone.percussive ? 0 : tone.sustainLevel;
            tone.level -= tone.decayStep;
            if (tone.level <= floor) {
                tone.level = floor;
                tone.stage = tone.percussive ? idle : sustain;
            }
        } else if (tone.stage == release) {
            tone.level -= tone.releaseStep;
            if (tone.level <= 0) {
                tone.level = 0;
                tone.stage = idle;
            }
        }
        if (tone.level <= 0)
            return 0;
        if (channel.kind == ChannelKind::noise)
            return tone.level * hiss(tone) * tone.gain;
        tone.phase += tone.increment;
        if (tone.phase >= 1)
            tone.phase -= std::floor(tone.phase);
        if (channel.kind == ChannelKind::wave) {
            const int index = static_cast<int>(tone.phase * 32);
            const float entry = channel.table[static_cast<std::size_t>(index < 31 ? index : 31)];
            return tone.level * entry * tone.gain;
        }
        const float value = tone.phase < channel.duty ? tone.level : -tone.level;
        return value * tone.gain;
    }

    float hiss(Tone& tone) const {
        if (tone.lfsrStep != 0) {
            tone.lfsrRate += tone.lfsrStep;
            if ((tone.lfsrStep < 0 && tone.lfsrRate <= tone.lfsrTarget) ||
                (tone.lfsrStep > 0 && tone.lfsrRate >= tone.lfsrTarget)) {
                tone.lfsrRate = tone.lfsrTarget;
                tone.lfsrStep = 0;
            }
        }
        tone.lfsrPhase += tone.lfsrRate / m_rate32;
        if (tone.lfsrPhase >= 1) {
            while (tone.lfsrPhase >= 1) {
                const unsigned feedback = (tone.lfsr & 1) ^ (tone.lfsr >> 1 & 1);
                tone.lfsr = tone.lfsr >> 1 | feedback << 14;
                if (tone.shortMode)
                    tone.lfsr = (tone.lfsr & ~0x40U) | feedback << 6;
                tone.lfsrPhase -= 1;
            }
            tone.noise = (tone.lfsr & 1) != 0 ? -1.0F : 1.0F;
        }
        return tone.noise;
    }

    const RenderPattern& m_pattern;
    double m_rate;
    float m_rate32;
    float m_coefficient;
    std::array<Tone, 4> m_tones;
    std::int64_t m_tick = -1;
    double m_untilTick = 0;
    float m_x = 0;
    float m_y = 0;
};

} // namespace mossbit
