#pragma once

namespace mossbit {

/// Whether a PulseAudio server answers but has no device to play on. SDL 2.26 crashes on such a
/// server, so it must not be started there. Waits for an answer for half a second at most.
bool pulseServerLacksDevice();

} // namespace mossbit
