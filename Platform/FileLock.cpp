#include "Platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace mossbit {

FileLock::FileLock(const std::filesystem::path& file)
    : m_descriptor(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (m_descriptor >= 0)
        m_isTaken = flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

FileLock::~FileLock() {
    if (m_descriptor >= 0)
        close(m_descriptor);
}

} // namespace mossbit
