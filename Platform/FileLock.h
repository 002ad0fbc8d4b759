#pragma once

#include "Platform/Descriptor.h"

#include <filesystem>

namespace mossbit {

/// Claims something for one process. The system gives it back when the process ends, however that
/// happens; the file itself stays.
class FileLock {
public:
    /// Makes `file` if need be. Never waits.
    explicit FileLock(const std::filesystem::path& file);

    /// Whether another process, or another lock here, had claimed it first. Where no lock can be
    /// made, nobody has.
    bool isTaken() const { return m_isTaken; }

private:
    Descriptor m_file;
    bool m_isTaken;
};

} // namespace mossbit
