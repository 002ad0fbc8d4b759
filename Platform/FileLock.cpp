#include "Platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace mossbit {

FileLock::FileLock(const std::filesystem::path& file)
    : m_file(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}

bool FileLock::claim(std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds pause{20};
    // Takes the lock, if it is free.
    const auto isTaken = [this] {
        return m_file && ::flock(m_file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    };
    for (; isTaken(); patience -= pause) {
        if (patience <= std::chrono::milliseconds(0))
            return false;
        std::this_thread::sleep_for(pause);
    }
    return true;
}

} // namespace mossbit
