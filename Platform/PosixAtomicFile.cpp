#include "Platform/PosixAtomicFile.h"

#include "Platform/Descriptor.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <optional>
#include <random>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __APPLE__
#include <copyfile.h>
#else
#include <sys/xattr.h>
#endif

namespace mossbit {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(int error, const fs::path& path) {
    throw std::system_error(error, std::generic_category(), path.string());
}

/// Repeats a call for as long as signals interrupt it.
template <typename Call>
auto uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Not made from the target's name, which may already be as long as names can be.
std::string temporaryName() {
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".mossbit-%08x%08x.tmp", random(), random());
    return name.data();
}

/// The file that a symbolic link points at in the end, existing or not.
fs::path linkTarget(fs::path path) {
    static_cast<void>(fs::status(path)); // Throws where links go in a circle.
    while (fs::is_symlink(path))
        path = path.parent_path() / fs::read_symlink(path);
    return path;
}

/// The file to be replaced, nothing for a new one. Throws where replacing it would be wrong: the
/// rename alone would also put a file in a device's place or overwrite what is write-protected.
std::optional<struct stat> statusOfTarget(const fs::path& target) {
    struct stat status {};
    if (::stat(target.c_str(), &status) != 0) {
        if (errno == ENOENT)
            return std::nullopt;
        fail(errno, target);
    }
    if (S_ISDIR(status.st_mode))
        fail(EISDIR, target);
    if (!S_ISREG(status.st_mode))
        fail(ENOTSUP, target);
    if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        fail(errno, target);
    return status;
}

fs::path folderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// Removes the temporaries beside a new file that a killed program left there. Their age is told
/// by the file system's clock, which may be another machine's.
void removeLeftovers(const fs::path& newFile) noexcept {
    try {
        const fs::file_time_type anHourAgo = fs::last_write_time(newFile) - std::chrono::hours(1);
        for (const fs::directory_entry& entry : fs::directory_iterator(folderOf(newFile))) {
            std::error_code ignored;
            if (::fnmatch(".mossbit-????????????????.tmp", entry.path().filename().c_str(), 0) ==
                    0 &&
                entry.last_write_time(ignored) < anHourAgo && !ignored)
                fs::remove(entry.path(), ignored);
        }
    } catch (const std::exception&) {
        // A folder that cannot be listed keeps what it holds.
    }
}

/// Gives a file the access-control list of another, or none if that has none.
bool copyAccessList(const fs::path& from, const fs::path& to) {
#ifdef __APPLE__
    return ::copyfile(from.c_str(), to.c_str(), nullptr, COPYFILE_ACL) == 0;
#else
    constexpr const char* name = "system.posix_acl_access";
    constexpr std::size_t largestAttribute = std::size_t{64} << 10;
    std::array<char, largestAttribute> list;
    const ssize_t size = ::getxattr(from.c_str(), name, list.data(), list.size());
    if (size >= 0)
        return ::setxattr(to.c_str(), name, list.data(), static_cast<std::size_t>(size), 0) == 0;
    if (errno != ENODATA && errno != ENOTSUP)
        return false;
    return ::removexattr(to.c_str(), name) == 0 || errno == ENODATA || errno == ENOTSUP;
#endif
}

/// Gives a new file what its group and others may do with the one that it replaces.
void adoptPermissions(const fs::path& path, int file, const fs::path& target,
                      const struct stat& old) {
    // Only the superuser can give files away. For others the file becomes the user's own, in the
    // old group if they belong to it. The `!` keeps GCC from warning of the unused result.
    constexpr auto sameUser = static_cast<uid_t>(-1);
    constexpr auto sameGroup = static_cast<gid_t>(-1);
    static_cast<void>(!::fchown(file, old.st_uid, sameGroup));
    static_cast<void>(!::fchown(file, sameUser, old.st_gid));
    const bool hasSameList = copyAccessList(target, path);
    struct stat now {};
    if (::fstat(file, &now) != 0)
        fail(errno, path);
    constexpr mode_t permissionBits = 07777;
    mode_t mode = old.st_mode & permissionBits;
    // A group other than the old one gets no more rights than everybody has. Where the list could
    // not be copied, only the owner gets any.
    if (now.st_gid != old.st_gid)
        mode = (mode & ~mode_t{S_IRWXG}) | (mode & S_IRWXO) << 3U;
    if (!hasSameList)
        mode &= ~mode_t{S_IRWXG | S_IRWXO};
    if ((now.st_mode & permissionBits) != mode && ::fchmod(file, mode) != 0)
        fail(errno, path);
}

/// Puts a rename on the disk. That fails only where the disk does, and then it is too late to say
/// so.
void syncFolder(const PosixFileCalls& calls, const fs::path& folder) {
    const Descriptor file(calls.open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0));
    if (file)
        calls.sync(file.number());
}

int syncToDisk(int descriptor) {
#ifdef F_FULLFSYNC
    // There fsync leaves the bytes in the drive's cache. Not every file system knows this call.
    if (::fcntl(descriptor, F_FULLFSYNC) == 0)
        return 0;
#endif
    return ::fsync(descriptor);
}

} // namespace

PosixFileCalls PosixFileCalls::real() {
    return {
        .open = [](const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); },
        .write = ::write,
        .sync = syncToDisk,
        .rename = ::rename,
    };
}

PosixAtomicFile::PosixAtomicFile(PosixFileCalls calls) : m_calls(std::move(calls)) {
    // Where the user's files may not grow any more, writing fails instead of ending the program.
    std::signal(SIGXFSZ, SIG_IGN);
}

void PosixAtomicFile::write(const fs::path& path,
                            const std::function<void(const Put&)>& putContent) {
    const fs::path target = linkTarget(path);
    const std::optional<struct stat> old = statusOfTarget(target);
    const fs::path temporary = folderOf(target) / temporaryName();
    // What replaces a private file must not be readable for a moment either.
    const mode_t mode = old ? 0600 : 0666;
    const Descriptor file(uninterrupted([&] {
        return m_calls.open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    }));
    if (!file)
        fail(errno, temporary);
    try {
        if (old)
            adoptPermissions(temporary, file.number(), target, *old);
        putContent([&](std::string_view piece) {
            while (!piece.empty()) {
                const ssize_t count = uninterrupted(
                    [&] { return m_calls.write(file.number(), piece.data(), piece.size()); });
                if (count <= 0)
                    fail(count < 0 ? errno : ENOSPC, temporary);
                piece.remove_prefix(static_cast<std::size_t>(count));
            }
        });
        if (uninterrupted([&] { return m_calls.sync(file.number()); }) != 0)
            fail(errno, temporary);
        move(temporary, target);
    } catch (...) {
        ::unlink(temporary.c_str());
        throw;
    }
    removeLeftovers(target);
}

void PosixAtomicFile::move(const fs::path& from, const fs::path& to) {
    if (m_calls.rename(from.c_str(), to.c_str()) != 0)
        fail(errno, from);
    syncFolder(m_calls, folderOf(to));
}

} // namespace mossbit
