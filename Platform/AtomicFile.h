#pragma once

#include <filesystem>
#include <string_view>

namespace mossbit {

/// Writes files that are replaced whole or not at all.
class AtomicFile {
public:
    virtual ~AtomicFile() = default;

    /// Writes `bytes` to a temporary file in the target's folder and renames it onto `path`. An
    /// existing file keeps its permissions, and a symbolic link keeps pointing at it.
    ///
    /// Throws `std::system_error` with the system's own description; the old file is then
    /// untouched and no temporary is left. After the rename nothing fails any more.
    virtual void write(const std::filesystem::path& path, std::string_view bytes) = 0;

    /// Removes the temporary files in `folder` that a killed program left behind. Never fails.
    virtual void removeLeftovers(const std::filesystem::path& folder) noexcept = 0;
};

} // namespace mossbit
