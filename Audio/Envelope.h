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

    /// Where a decay ends.
    float decayFloor() const { return percussive ? 0.0F : sustainLevel; }

    /// Moves `level` by one sample.
    void advance() {
        switch (stage) {
        case Stage::attack:
            level += attackStep;
            if (level >= 1) {
                level = 1;
                stage = percussive || sustainLevel < 1 ? Stage::decay : Stage::sustain;
            }
            break;
        case Stage::decay:
            level -= decayStep;
            if (level <= decayFloor()) {
                level = decayFloor();
                stage = percussive ? Stage::idle : Stage::sustain;
            }
            break;
        case Stage::release:
            level -= releaseStep;
            if (level <= 0)
                silence();
            break;
        case Stage::idle:
        case Stage::sustain:
            break;
        }
    }
};

} // namespace mossbit
