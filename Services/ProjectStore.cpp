#include "Services/ProjectStore.h"

#include "Platform/Descriptor.h"
#include "Services/ProjectJson.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace mossbit::ProjectStore {

namespace {

/// A full song takes 180 kB. A hostile file takes up to 80 times its size to be read.
constexpr std::size_t largestFile = std::size_t{4} << 20;

[[noreturn]] void fail(int error, const std::filesystem::path& url) {
    throw std::system_error(error, std::generic_category(), url.string());
}

std::string readFile(const std::filesystem::path& url) {
    const Descriptor file(::open(url.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
    if (!file)
        fail(errno, url);
    std::string bytes;
    std::array<char, std::size_t{64} << 10> piece{};
    while (bytes.size() <= largestFile) {
        const ssize_t count = ::read(file.number(), piece.data(), piece.size());
        if (count == 0)
            return bytes;
        if (count > 0)
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            fail(errno, url);
    }
    fail(EFBIG, url);
}

Project withoutIds(Project project) {
    for (Channel& channel : project.channels)
        for (Note& note : channel.notes)
            note.id = {};
    return project;
}

} // namespace

Project read(const std::filesystem::path& url) {
    // Told before opening: that can wait for a pipe's writer, or make a device do something.
    if (std::filesystem::is_other(url))
        throw DecodingError("It is not a regular file");
    return readToEnd(url);
}

Project readToEnd(const std::filesystem::path& url) {
    Project project = decodeProject(readFile(url));
    // A short text can be a long song; what is opened must also be saved and opened again.
    if (encode(project).size() > largestFile)
        fail(EFBIG, url);
    return project;
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
