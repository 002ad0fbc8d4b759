#pragma once

#include <cstdint>

namespace mossbit {

/// The amplitude of a note over time: linear attack, decay and release.
struct Envelope {
    enum class Stage : std::uint8_t { idle, attack, decay, sustain, release };

    Stage stage = Stage::idle;
    /// 0 … 1.
    float level = 0;
    /// Change of `level` per sample.
    float attackStep = 1;
    float decayStep = 0;
    float releaseStep = 1;
    /// Where the decay ends, unless percussive.
    float sustainLevel = 1;
    /// Decays to silence by itself and ignores `release`.
    bool percussive = false;

    /// Starts the attack from the current level.
    void attack() { stage = Stage::attack; }

    void release() {
        if (stage != Stage::idle && !percussive)
            stage = Stage::release;
    }

    void silence() {
        stage = Stage::idle;
        level = 0;
    }

    /// Moves `level` by one sample.
    void advance();

    /// Where a decay ends.
    float decayFloor() const { return percussive ? 0.0F : sustainLevel; }
};

} // namespace mossbit
