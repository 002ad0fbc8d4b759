#pragma once

#include "Models/Project.h"
#include "Platform/AppPaths.h"

#include <filesystem>
#include <string>

/// Turns projects into files and knows where the autosave lies.
namespace mossbit::ProjectStore {

/// The bytes of a project file.
std::string encode(const Project& project);

/// Reads and decodes a project file. Throws `std::system_error` or `DecodingError`, both with a
/// description that a person can act on. Refuses folders, devices and files over 64 MiB unread.
Project read(const std::filesystem::path& url);

/// "Mossbit/Autosave.mossbit" in the application-support folder. Makes the folder; where that
/// fails, the location is returned all the same and writing to it will fail.
std::filesystem::path autosaveURL(const AppPaths& paths);

} // namespace mossbit::ProjectStore
