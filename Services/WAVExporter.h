#pragma once

#include "Models/Project.h"
#include "Platform/AtomicFile.h"

#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>

namespace mossbit {

/// Why an export failed; `what()` is for the user.
class ExportError : public std::runtime_error {
public:
    enum class Kind { writeFailed, empty };

    ExportError(Kind kind, const std::string& message)
        : std::runtime_error(message), m_kind(kind) {}

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

/// Renders whole songs into 16-bit PCM WAV files at 44100 Hz.
namespace WAVExporter {

inline constexpr int exportSampleRate = 44100;

/// The bytes of a WAV file that carries `mono`, samples of −1 … 1, on its left and right channels.
/// At most 1,073,741,814 samples, so that the sizes fit their 32-bit fields.
std::string wavData(std::span<const float> mono);

/// Renders exactly one pass of the song, whatever its loop switch says, and writes it. Notes still
/// sounding at the end are cut. Throws `ExportError`, or `std::bad_alloc` where memory runs out;
/// the old file then stays.
void exportProject(const Project& project, const std::filesystem::path& url, AtomicFile& files);

} // namespace WAVExporter

} // namespace mossbit
