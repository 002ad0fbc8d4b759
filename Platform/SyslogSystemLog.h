#pragma once

#include "Platform/SystemLog.h"

namespace mossbit {

/// The system log, and standard error for whoever started the program in a terminal.
class SyslogSystemLog final : public SystemLog {
public:
    void write(std::string_view line) override;
};

} // namespace mossbit
