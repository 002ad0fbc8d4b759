#include "Services/ProjectStore.h"

#include "Platform/Descriptor.h"
#include "Services/ProjectJson.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace mossbit::ProjectStore {

namespace {

/// A full song takes 180 kB.
constexpr std::size_t largestFile = std::size_t{64} << 20;

[[noreturn]] void fail(int error, const std::filesystem::path& url) {
    throw std::system_error(error, std::generic_category(), url.string());
}

void checkIsReadable(int result, const struct stat& status, const std::filesystem::path& url) {
    if (result != 0)
        fail(errno, url);
    if (S_ISDIR(status.st_mode))
        fail(EISDIR, url);
    if (!S_ISREG(status.st_mode))
        throw DecodingError("It is not a regular file");
    if (status.st_size > static_cast<off_t>(largestFile))
        fail(EFBIG, url);
}

std::string readFile(const std::filesystem::path& url) {
    struct stat status {};
    // Before opening, because merely opening a device can do something.
    checkIsReadable(::stat(url.c_str(), &status), status, url);
    // Does not wait for a writer, should a pipe have taken the file's place by now.
    const Descriptor file(::open(url.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        fail(errno, url);
    checkIsReadable(::fstat(file.number(), &status), status, url);

    // One byte more than the size shows the end; a file may also have grown, or lie about its size.
    std::string bytes;
    std::size_t length = 0;
    bytes.resize(static_cast<std::size_t>(status.st_size) + 1);
    while (true) {
        const ssize_t count = ::read(file.number(), bytes.data() + length, bytes.size() - length);
        if (count < 0 && errno != EINTR)
            fail(errno, url);
        if (count == 0)
            break;
        length += count > 0 ? static_cast<std::size_t>(count) : 0;
        if (length > largestFile)
            fail(EFBIG, url);
        if (length == bytes.size())
            bytes.resize(2 * length);
    }
    bytes.resize(length);
    return bytes;
}

Project withoutIds(Project project) {
    for (Channel& channel : project.channels)
        for (Note& note : channel.notes)
            note.id = {};
    return project;
}

} // namespace

std::string encode(const Project& project) {
    return encodeProject(project);
}

Project read(const std::filesystem::path& url) {
    return decodeProject(readFile(url));
}

bool holds(const std::filesystem::path& url, const Project& project) {
    try {
        return withoutIds(read(url)) == withoutIds(project);
    } catch (const std::exception&) {
        return false;
    }
}

std::filesystem::path autosaveURL(const std::filesystem::path& applicationSupport) {
    const std::filesystem::path folder = applicationSupport / "Mossbit";
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    return folder / "Autosave.mossbit";
}

} // namespace mossbit::ProjectStore
