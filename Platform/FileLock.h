#pragma once

#include <filesystem>

namespace mossbit {

/// Claims something for one process. The system gives it back when the process ends, however that
/// happens; the file itself stays.
class FileLock {
public:
    /// Makes `file` if need be. Never waits.
    explicit FileLock(const std::filesystem::path& file);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Whether another process, or another lock here, had claimed it first. Where no lock can be
    /// made, nobody has.
    bool isTaken() const { return m_isTaken; }

private:
    int m_descriptor = -1;
    bool m_isTaken = false;
};

} // namespace mossbit
