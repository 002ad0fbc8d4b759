#pragma once

#include "Platform/AtomicFile.h"

#include <functional>

#include <sys/types.h>

namespace mossbit {

/// The system calls that fail on a full or broken disk, in POSIX's manner: on an error they return
/// -1 and set `errno`. Tests replace them.
struct PosixFileCalls {
    std::function<int(const char* path, int flags, mode_t mode)> open;
    std::function<ssize_t(int descriptor, const void* bytes, std::size_t count)> write;
    /// Returns when file or folder are on the disk.
    std::function<int(int descriptor)> sync;
    std::function<int(const char* from, const char* to)> rename;

    static PosixFileCalls real();
};

/// The file system of a POSIX system.
class PosixAtomicFile final : public AtomicFile {
public:
    explicit PosixAtomicFile(PosixFileCalls calls = PosixFileCalls::real());

    using AtomicFile::write;
    void write(const std::filesystem::path& path,
               const std::function<void(const Put&)>& putContent) override;
    void move(const std::filesystem::path& from, const std::filesystem::path& to) override;

private:
    PosixFileCalls m_calls;
};

} // namespace mossbit
