#include "Services/RecoveryFiles.h"

#include "Services/ProjectStore.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>

namespace mossbit {

namespace {

namespace fs = std::filesystem;

/// What `newKeptFile` makes; sorted by name, such files are sorted by time.
constexpr const char* keptPattern = "20*-*-* *-*-* *.mossbit";

std::string timestamp(std::time_t time) {
    std::tm local{};
    ::localtime_r(&time, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H-%M-%S ", &local);
    return text.data();
}

/// Short enough for a file name with a time before and an extension behind it.
std::string_view shortened(std::string_view title) {
    constexpr std::size_t mostBytes = 200;
    constexpr unsigned continuationByte = 0b10;
    std::size_t size = std::min(title.size(), mostBytes);
    while (size < title.size() && static_cast<unsigned char>(title[size]) >> 6 == continuationByte)
        --size;
    return title.substr(0, size);
}

std::string name(const fs::path& file) {
    return file.filename().string();
}

bool haveSameBytes(const fs::path& left, const fs::path& right) {
    // Opening a pipe would wait for its writer.
    if (!fs::is_regular_file(left) || !fs::is_regular_file(right))
        return false;
    using Bytes = std::istreambuf_iterator<char>;
    std::ifstream first(left, std::ios::binary), second(right, std::ios::binary);
    return std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

} // namespace

RecoveryFiles::RecoveryFiles(AtomicFile& files, const fs::path& autosaveURL)
    : m_files(files),
      m_autosave(autosaveURL),
      m_kept(autosaveURL.parent_path() / "Kept"),
      m_lock(lockFile(autosaveURL)) {}

std::optional<Project> RecoveryFiles::restore() {
    if (!m_lock.claim())
        return std::nullopt;
    try {
        Project project = ProjectStore::read(m_autosave);
        m_mayAutosave = true;
        return project;
    } catch (const std::exception&) {
        takeOver();
        return std::nullopt;
    }
}

bool RecoveryFiles::autosave(const Project& project) {
    if (!m_mayAutosave && !takeOver())
        return false;
    try {
        m_files.write(m_autosave, ProjectStore::encode(project));
        return true;
    } catch (const std::exception&) {
        // Nobody asked for this write, so nobody is told. The next change tries again.
        return false;
    }
}

/// Claims the autosave with what an ended copy left there, or what could not be read: both go into
/// `Kept` before anything is written in their place.
bool RecoveryFiles::takeOver() {
    if (!m_lock.claim())
        return false;
    try {
        // A link that points nowhere is something, too.
        const bool isFree = fs::symlink_status(m_autosave).type() == fs::file_type::not_found;
        if (!isFree && !ProjectStore::holds(m_autosave, Project())) {
            const fs::path file = newKeptFile(m_autosave.stem().native());
            m_files.move(m_autosave, file);
            removeSuperfluous(file);
        }
        m_mayAutosave = true;
    } catch (const std::exception&) {
        // Tried again with the next autosave.
    }
    return m_mayAutosave;
}

bool RecoveryFiles::keep(const Project& project, std::string_view title) {
    try {
        const fs::path file = newKeptFile(title);
        m_files.write(file, ProjectStore::encode(project));
        removeSuperfluous(file);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool RecoveryFiles::contains(const fs::path& file) const {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(file, error).parent_path();
    return fs::equivalent(folder, m_autosave.parent_path(), error) ||
           fs::equivalent(folder, m_kept, error);
}

/// The oldest first.
std::vector<fs::path> RecoveryFiles::keptFiles() const {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_kept))
        if (entry.is_regular_file() && ::fnmatch(keptPattern, name(entry.path()).c_str(), 0) == 0)
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// The path of a file that does not exist yet, in a folder that does. Its time is later than that
/// of all others, unless the clock has been put back by far.
fs::path RecoveryFiles::newKeptFile(std::string_view title) const {
    constexpr int mostSteps = 3600;
    fs::create_directories(m_kept);
    const std::vector<fs::path> files = keptFiles();
    const std::string newest = files.empty() ? "" : name(files.back());
    std::time_t time = std::time(nullptr);
    for (int step = 0; step < mostSteps && timestamp(time) <= newest; ++step)
        ++time;
    return m_kept / timestamp(time).append(shortened(title)).append(".mossbit");
}

/// Removes what is too many, and older copies of `newest`, so that they push out no other song.
void RecoveryFiles::removeSuperfluous(const fs::path& newest) const noexcept {
    try {
        std::vector<fs::path> files = keptFiles();
        std::erase_if(files, [&](const fs::path& file) {
            return file != newest && haveSameBytes(file, newest) && fs::remove(file);
        });
        for (std::size_t i = 0; i + keptLimit < files.size(); ++i)
            if (files[i] != newest)
                fs::remove(files[i]);
    } catch (const std::exception&) {
        // Too many songs do no harm.
    }
}

} // namespace mossbit
