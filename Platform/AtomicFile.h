#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

namespace mossbit {

/// Writes files that are replaced whole or not at all.
class AtomicFile {
public:
    virtual ~AtomicFile() = default;

    /// Takes the next piece of a file's content.
    using Put = std::function<void(std::string_view piece)>;

    /// Lets `putContent` write to a temporary file in the target's folder and renames that onto
    /// `path`. An existing file keeps its permissions. Of a symbolic link, the file that it points
    /// at is replaced. Temporaries that a killed program left in the folder more than an hour ago
    /// are removed.
    ///
    /// Throws `std::system_error` with the system's own description, or what `putContent` throws;
    /// the old file is then untouched and no temporary is left. Nothing throws after the rename.
    virtual void write(const std::filesystem::path& path,
                       const std::function<void(const Put&)>& putContent) = 0;

    void write(const std::filesystem::path& path, std::string_view bytes) {
        write(path, [bytes](const Put& put) { put(bytes); });
    }

    /// Renames a file, replacing what is at `to`. Throws `std::system_error`; both are then what
    /// they were.
    virtual void move(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
};

} // namespace mossbit
