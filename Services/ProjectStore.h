#pragma once

#include "Models/Project.h"

#include <filesystem>
#include <string>

/// Turns projects into files and knows where the autosave lies.
namespace mossbit::ProjectStore {

/// The content of a project file, always the same bytes for the same project: keys sorted, two
/// spaces of indent, one element per line.
std::string encode(const Project& project);

/// Reads and decodes a project file of at most 4 MiB. Throws `std::system_error` or
/// `DecodingError`, both with a description that a person can act on; what is no regular file is
/// refused without opening it.
Project read(const std::filesystem::path& url);

/// The same for pipes and devices, too; waits for all that their writer has to say.
Project readToEnd(const std::filesystem::path& url);

/// Whether that file can be read and holds the same song; identifiers of notes do not count, as a
/// file may leave them out.
bool holds(const std::filesystem::path& url, const Project& project);

/// "Mossbit/Autosave.mossbit" in the folder for application data. Makes the folder; where that
/// fails, the location is returned all the same and writing to it will fail.
std::filesystem::path autosaveURL(const std::filesystem::path& applicationSupport);

} // namespace mossbit::ProjectStore
