#include "Services/RecoveryFiles.h"

#include "Services/ProjectStore.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

namespace mossbit {

namespace {

namespace fs = std::filesystem;

constexpr const char* timeFormat = "%Y-%m-%d %H-%M-%S";

std::string nameOf(std::time_t time, std::string_view title) {
    std::tm local{};
    ::localtime_r(&time, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), timeFormat, &local);
    return std::string(text.data()).append(" ").append(title).append(".mossbit");
}

/// The time in a name that `nameOf` has made; nothing for other files.
std::optional<std::time_t> timeIn(const fs::path& file) {
    const std::string name = file.filename().string();
    std::tm local{};
    local.tm_isdst = -1;
    const char* const rest = ::strptime(name.c_str(), timeFormat, &local);
    if (rest == nullptr || *rest != ' ' || file.extension() != ".mossbit")
        return std::nullopt;
    return std::mktime(&local);
}

/// Short enough for a file name with a time before and an extension behind it.
std::string_view shortened(std::string_view title) {
    constexpr std::size_t mostBytes = 200;
    constexpr unsigned continuationByte = 0b10;
    std::size_t size = std::min(title.size(), mostBytes);
    while (size > 0 && size < title.size() &&
           static_cast<unsigned char>(title[size]) >> 6 == continuationByte)
        --size;
    return title.substr(0, size);
}

bool haveSameBytes(const fs::path& left, const fs::path& right) {
    using Bytes = std::istreambuf_iterator<char>;
    std::ifstream first(left, std::ios::binary), second(right, std::ios::binary);
    return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

bool isSongWithoutNotes(const fs::path& file) {
    try {
        return !ProjectStore::read(file).hasNotes();
    } catch (const std::exception&) {
        return false;
    }
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
    removeOldest();
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
    // An empty song does not take the place of what an ended copy has left for the next start.
    if (!m_mayAutosave && (!project.hasNotes() || !takeOver()))
        return false;
    try {
        m_files.write(m_autosave, ProjectStore::encode(project));
        return true;
    } catch (const std::exception& error) {
        // Nobody asked for this write, so nobody is told. The next change tries again, and moves
        // away a file that may not be written.
        const auto* const failure = dynamic_cast<const std::system_error*>(&error);
        if (failure != nullptr && failure->code() == std::errc::permission_denied)
            m_mayAutosave = false;
        return false;
    }
}

/// Claims the lock and moves what lies in the autosave's place into `Kept`, unless it is a song
/// without notes. Returns whether the autosave may be written now.
bool RecoveryFiles::takeOver() {
    if (!m_lock.claim())
        return false;
    try {
        // A link that points nowhere is moved away, too.
        const bool isFree = fs::symlink_status(m_autosave).type() == fs::file_type::not_found;
        if (!isFree && !isSongWithoutNotes(m_autosave)) {
            const std::string title = m_autosave.stem().string();
            addToKept(title, [&](const fs::path& file) { m_files.move(m_autosave, file); });
        }
        m_mayAutosave = true;
    } catch (const std::exception&) {
        // Tried again with the next autosave.
    }
    return m_mayAutosave;
}

bool RecoveryFiles::keep(const Project& project, std::string_view title) {
    try {
        addToKept(title, [&](const fs::path& file) {
            m_files.write(file, ProjectStore::encode(project));
        });
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// Lets `add` make a file in `Kept`. Its name has the latest time of all, even if the clock has
/// been put back, because `removeOldest` removes the earliest.
void RecoveryFiles::addToKept(std::string_view title,
                              const std::function<void(const fs::path&)>& add) {
    constexpr std::chrono::seconds patience{2};
    fs::create_directories(m_kept);
    // Another copy must not choose the same name.
    FileLock lock(m_kept / ".lock");
    lock.claim(patience);
    const std::vector<fs::path> others = keptFiles();
    std::time_t time = std::time(nullptr);
    if (!others.empty())
        time = std::max(time, *timeIn(others.back()) + 1);
    const fs::path file = m_kept / nameOf(time, shortened(title));
    add(file);
    // Songs with the same bytes would push out other songs. A pipe, moved here from the autosave's
    // place, is not compared, because opening it would wait for its writer.
    for (const fs::path& other : others)
        if (fs::is_regular_file(file) && haveSameBytes(other, file))
            fs::remove(other);
}

bool RecoveryFiles::contains(const fs::path& file) const {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(file, error).parent_path();
    return fs::equivalent(folder, m_autosave.parent_path(), error) ||
           fs::equivalent(folder, m_kept, error);
}

/// The oldest first, which is the order of the names.
std::vector<fs::path> RecoveryFiles::keptFiles() const {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(m_kept))
        if (entry.is_regular_file() && timeIn(entry.path()))
            files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

/// Leaves the last `keptLimit` songs. Only at a start, when no song is just being opened.
void RecoveryFiles::removeOldest() const noexcept {
    try {
        const std::vector<fs::path> files = keptFiles();
        for (std::size_t i = 0; i + keptLimit < files.size(); ++i)
            fs::remove(files[i]);
    } catch (const std::exception&) {
        // Too many songs do no harm, and at the first start there are none.
    }
}

} // namespace mossbit
