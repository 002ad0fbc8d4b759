#pragma once

#include "Models/Project.h"
#include "Platform/AtomicFile.h"
#include "Platform/FileLock.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace mossbit {

/// Mossbit's own files: the autosave, which the next start restores, and the folder `Kept` beside
/// it, into which goes a song that gives way to another one.
///
/// Of several copies of the program that run at once, the one that has claimed the lock beside the
/// autosave writes it.
class RecoveryFiles {
public:
    /// The number of songs that stay in `Kept` at a start.
    static constexpr std::size_t keptLimit = 50;

    /// What the copy that writes the autosave has locked.
    static std::filesystem::path lockFile(const std::filesystem::path& autosaveURL) {
        return autosaveURL.parent_path() / "Autosave.lock";
    }

    RecoveryFiles(AtomicFile& files, const std::filesystem::path& autosaveURL);

    /// What the last run left, unless another copy has the autosave. What cannot be read is moved
    /// into `Kept`.
    std::optional<Project> restore();

    /// Writes the autosave. Returns whether that went well; it does not where another copy has the
    /// autosave, or where something unreadable lies in its place and cannot be moved away.
    bool autosave(const Project& project);

    /// Writes the song into `Kept`, named by the time and `title`. Returns whether that went well.
    bool keep(const Project& project, std::string_view title);

    /// Whether a file lies among these, so that Mossbit may replace or remove it.
    bool contains(const std::filesystem::path& file) const;

private:
    bool takeOver();
    void addToKept(std::string_view title,
                   const std::function<void(const std::filesystem::path&)>& add);
    std::vector<std::filesystem::path> keptFiles() const;
    void removeOldest() const noexcept;

    AtomicFile& m_files;
    const std::filesystem::path m_autosave;
    const std::filesystem::path m_kept;
    FileLock m_lock;
    /// The autosave is this copy's, and what lies in its place may be replaced.
    bool m_mayAutosave = false;
};

} // namespace mossbit
