#pragma once

namespace mossbit {

/// Whether there is a PulseAudio server, but it names no device to play on within 1.5 seconds. SDL
/// 2.26 crashes on a server without one and waits for a silent one without end, so it must not be
/// started there.
bool pulseServerLacksDevice();

} // namespace mossbit
