#pragma once

#include "Models/Project.h"

#include <stdexcept>
#include <string_view>

namespace mossbit {

/// Why a text is not a project: what was wrong and where, for example
/// "channels[1].notes[4].pitch: expected a whole number, found a string".
class DecodingError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Reads a project file's content. Missing members are completed, numbers out of range clamped and
/// the four channels put in their order; a note without an identifier, or with that of a note
/// before it, gets a new one each time. Throws `DecodingError` for anything else.
///
/// Takes up to about 80 times the memory of `text`.
Project decodeProject(std::string_view text);

} // namespace mossbit
