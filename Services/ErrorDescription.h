#pragma once

#include <exception>
#include <string>

namespace mossbit {

/// What to tell the user about an exception: for an error of the system the system's own words
/// ("Permission denied"), without the name of the call that failed; for others their `what()`.
std::string description(const std::exception& error);

} // namespace mossbit
