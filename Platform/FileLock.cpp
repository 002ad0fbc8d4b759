#include "Platform/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

namespace mossbit {

FileLock::FileLock(const std::filesystem::path& file)
    : m_file(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
      m_isTaken(m_file && ::flock(m_file.number(), LOCK_EX | LOCK_NB) != 0 &&
                errno == EWOULDBLOCK) {}

} // namespace mossbit
