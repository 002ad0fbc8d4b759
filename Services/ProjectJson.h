#pragma once

#include "Models/Project.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace mossbit {

/// Why a text is not a project: what was wrong and where, for example
/// "channels[1].notes[4].pitch: expected a whole number, found a string".
class DecodingError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a project file's content. Missing members are completed, numbers out of range clamped and
/// the four channels put in their order; notes without an identifier get a new one each time.
/// Throws `DecodingError` for anything else.
///
/// Time and memory grow with the length of `json` only, whatever it holds.
Project decodeProject(std::string_view json);

/// The content of a project file, always the same bytes for the same project: keys sorted, two
/// spaces of indent, one element per line.
std::string encodeProject(const Project& project);

} // namespace mossbit
