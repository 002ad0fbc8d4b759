#pragma once

#include "Models/Project.h"

#include <filesystem>
#include <string>

/// Turns projects into files and knows where the autosave lies.
namespace mossbit::ProjectStore {

/// The bytes of a project file.
std::string encode(const Project& project);

/// Reads and decodes a project file. Throws `std::system_error` or `DecodingError`, both with a
/// description that a person can act on. Refuses folders, devices and files over 64 MiB unread.
Project read(const std::filesystem::path& url);

/// Whether that file can be read and holds the same song; identifiers of notes do not count, as a
/// file may leave them out.
bool holds(const std::filesystem::path& url, const Project& project);

/// "Mossbit/Autosave.mossbit" in the folder for application data. Makes the folder; where that
/// fails, the location is returned all the same and writing to it will fail.
std::filesystem::path autosaveURL(const std::filesystem::path& applicationSupport);

} // namespace mossbit::ProjectStore
