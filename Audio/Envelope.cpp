#include "Audio/Envelope.h"

namespace mossbit {

void Envelope::advance() {
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

} // namespace mossbit
