#include "Platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <thread>

namespace mossbit {

FileLock::FileLock(const std::filesystem::path& file)
    : m_file(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {}

bool FileLock::claim() {
    return !m_file || ::flock(m_file.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void waitForFileLock(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds pause{20};
    FileLock lock(file);
    for (auto waited = pause; !lock.claim() && waited <= limit; waited += pause)
        std::this_thread::sleep_for(pause);
}

} // namespace mossbit
