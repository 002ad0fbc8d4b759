#pragma once

#include <filesystem>

namespace mossbit {

/// Where the system wants a program to keep a user's data.
class AppPaths {
public:
    virtual ~AppPaths() = default;

    /// The folder for application data of this user; ours is made inside it. It may not exist yet.
    virtual std::filesystem::path applicationSupportFolder() const = 0;
};

} // namespace mossbit
