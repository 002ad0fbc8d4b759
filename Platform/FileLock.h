#pragma once

#include "Platform/Descriptor.h"

#include <chrono>
#include <filesystem>

namespace mossbit {

/// Claims something for one process. The system gives it back when the process ends, however that
/// happens; the file itself stays.
class FileLock {
public:
    /// Makes `file` if need be.
    explicit FileLock(const std::filesystem::path& file);

    /// Whether it is claimed for this process now: no other process and no other lock here has it.
    /// Waits for its release, but not longer than `patience`. Where no lock can be made, nobody
    /// else has one.
    bool claim(std::chrono::milliseconds patience = {});

private:
    Descriptor m_file;
};

} // namespace mossbit
