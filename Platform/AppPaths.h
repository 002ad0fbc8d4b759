#pragma once

#include <filesystem>

namespace mossbit {

/// The folder in which the desktop's conventions want this user's application data; Mossbit's is
/// made inside it. It may not exist yet.
std::filesystem::path applicationSupportFolder();

} // namespace mossbit
