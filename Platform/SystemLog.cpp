#include "Platform/SystemLog.h"

#include <syslog.h>

#include <iostream>
#include <string>

namespace mossbit {

void writeSystemLog(std::string_view line) {
    const std::string text(line);
    syslog(LOG_USER | LOG_ERR, "%s", text.c_str());
    std::cerr << text + '\n';
}

} // namespace mossbit
