#pragma once

#include "Platform/PosixAtomicFile.h"

#include <cerrno>
#include <functional>
#include <string>

namespace mossbit {

/// The real calls, for a disk that fails: `fault` is asked before each one, by its name, for the
/// error number that it ends with. At 0 it is made.
inline PosixFileCalls faultyCalls(const std::function<int(const std::string& call)>& fault) {
    const auto faulty = [&](const char* name, auto call) {
        return [=](auto... arguments) {
            errno = fault(name);
            return errno == 0 ? call(arguments...) : -1;
        };
    };
    const PosixFileCalls real = PosixFileCalls::real();
    return {.open = faulty("open", real.open),
            .write = faulty("write", real.write),
            .sync = faulty("sync", real.sync),
            .rename = faulty("rename", real.rename)};
}

} // namespace mossbit
