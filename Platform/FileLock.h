#pragma once

#include "Platform/Descriptor.h"

#include <chrono>
#include <filesystem>

namespace mossbit {

/// A lock that one process holds by means of a file. The system releases it when the process ends,
/// however that happens; the file itself stays.
class FileLock {
public:
    /// Makes `file` if need be.
    explicit FileLock(const std::filesystem::path& file);

    /// Whether this lock is held now: no other process and no other `FileLock` of this one has it.
    /// Waits for its release, but not longer than `patience`. True also where no lock can be made.
    bool claim(std::chrono::milliseconds patience = {});

private:
    Descriptor m_file;
};

} // namespace mossbit
