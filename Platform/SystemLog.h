#pragma once

#include <functional>
#include <string_view>

namespace mossbit {

/// Takes one line for the system log.
using SystemLog = std::function<void(std::string_view line)>;

/// Writes to the real one, and to standard error for whoever started the program in a terminal.
void writeSystemLog(std::string_view line);

} // namespace mossbit
