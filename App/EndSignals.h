#pragma once

#include <functional>

namespace mossbit {

/// Has the main loop run `action` at the first of the signals that ask a process to end: SIGTERM,
/// SIGINT, SIGHUP. To be called once.
void atEndSignal(std::function<void()> action);

} // namespace mossbit
