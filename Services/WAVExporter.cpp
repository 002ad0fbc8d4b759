#include "Services/WAVExporter.h"

#include "Audio/ChipCore.h"
#include "Services/ErrorDescription.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <system_error>
#include <vector>

namespace mossbit {

ExportError::ExportError(Kind kind, const std::string& message)
    : std::runtime_error(message), m_kind(kind) {}

ExportError ExportError::writeFailed(const std::string& message) {
    return {Kind::writeFailed, message};
}

ExportError ExportError::empty() {
    return {Kind::empty, "There are no notes to export yet."};
}

namespace WAVExporter {

namespace {

constexpr std::size_t headerBytes = 44;
constexpr std::size_t bytesPerFrame = 4;
constexpr std::size_t blockFrames = 1024;

char* putNumber(char* at, std::uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        *at++ = static_cast<char>(value >> (8 * i));
    return at;
}

char* putTag(char* at, const char* tag) {
    return std::copy_n(tag, 4, at);
}

char* putHeader(char* at, std::size_t frames) {
    const auto dataBytes = static_cast<std::uint32_t>(frames * bytesPerFrame);
    at = putTag(at, "RIFF");
    at = putNumber(at, 36 + dataBytes, 4);
    at = putTag(at, "WAVE");
    at = putTag(at, "fmt ");
    at = putNumber(at, 16, 4); // Size of the fields up to "data".
    at = putNumber(at, 1, 2);  // PCM.
    at = putNumber(at, 2, 2);  // Channels.
    at = putNumber(at, exportSampleRate, 4);
    at = putNumber(at, exportSampleRate * bytesPerFrame, 4);
    at = putNumber(at, bytesPerFrame, 2);
    at = putNumber(at, 16, 2); // Bits per sample.
    at = putTag(at, "data");
    return putNumber(at, dataBytes, 4);
}

/// Both channels of a frame, the left one first.
std::uint32_t converted(float sample) {
    const float scaled = sample < 1 ? std::max(sample, -1.0F) * 32767 : 32767.0F;
    const auto pcm = static_cast<std::uint32_t>(static_cast<std::int32_t>(scaled)) & 0xFFFFU;
    return pcm | pcm << 16U;
}

/// How many frames one pass of the pattern lasts, rounded half up.
std::size_t frameCount(const RenderPattern& pattern) {
    const double frames =
        (60 / pattern.tempo) * 0.25 * exportSampleRate * static_cast<double>(pattern.totalTicks);
    return static_cast<std::size_t>(std::llround(frames));
}

} // namespace

std::string wavData(std::span<const float> mono) {
    std::string bytes(headerBytes + mono.size() * bytesPerFrame, '\0');
    char* at = putHeader(bytes.data(), mono.size());
    for (const float sample : mono)
        at = putNumber(at, converted(sample), bytesPerFrame);
    return bytes;
}

void exportProject(const Project& project, const std::filesystem::path& url, AtomicFile& files) {
    if (!project.hasNotes())
        throw ExportError::empty();
    Project onePass = project;
    onePass.loop = false;
    const auto pattern = std::make_shared<const RenderPattern>(onePass);
    ChipCore core(pattern, exportSampleRate);
    std::vector<float> samples(frameCount(*pattern));
    for (std::span<float> rest(samples); !rest.empty();) {
        const std::span<float> block = rest.first(std::min(rest.size(), blockFrames));
        core.render(block);
        rest = rest.subspan(block.size());
    }
    const std::string bytes = wavData(samples);
    try {
        files.write(url, bytes);
    } catch (const std::system_error& error) {
        throw ExportError::writeFailed(description(error));
    }
}

} // namespace WAVExporter

} // namespace mossbit
