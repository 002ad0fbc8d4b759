#pragma once

#include <string_view>

namespace mossbit {

/// The log that a system administrator reads.
class SystemLog {
public:
    virtual ~SystemLog() = default;

    /// Writes one line. `line` is UTF-8 without a line break.
    virtual void write(std::string_view line) = 0;
};

} // namespace mossbit
