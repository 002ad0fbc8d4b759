#include "Services/WAVExporter.h"

#include "Audio/ChipCore.h"
#include "Services/ErrorDescription.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

namespace mossbit::WAVExporter {

namespace {

constexpr std::size_t bytesPerFrame = 4;
constexpr std::size_t blockFrames = 1024;
/// Pieces of 256 KiB are written fastest.
constexpr std::size_t pieceFrames = 64 * blockFrames;

void appendNumber(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i)
        bytes += static_cast<char>(value >> (8 * i));
}

std::string header(std::size_t frames) {
    const auto dataBytes = static_cast<std::uint32_t>(frames * bytesPerFrame);
    std::string bytes = "RIFF";
    appendNumber(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    appendNumber(bytes, 16, 4); // Size of the fields up to "data".
    appendNumber(bytes, 1, 2);  // PCM.
    appendNumber(bytes, 2, 2);  // Channels.
    appendNumber(bytes, exportSampleRate, 4);
    appendNumber(bytes, exportSampleRate * bytesPerFrame, 4);
    appendNumber(bytes, bytesPerFrame, 2);
    appendNumber(bytes, 16, 2); // Bits per sample.
    bytes += "data";
    appendNumber(bytes, dataBytes, 4);
    return bytes;
}

/// Writes both channels of each frame, the left one first. Nothing here keeps a compiler from
/// converting several at once.
void convert(std::span<const float> mono, char* into) {
    for (std::size_t i = 0; i < mono.size(); ++i) {
        const float scaled = mono[i] * 32767;
        const float limited = std::max(scaled < 32767 ? scaled : 32767.0F, -32767.0F);
        const auto pcm = static_cast<std::uint32_t>(static_cast<std::int32_t>(limited)) & 0xFFFFU;
        std::uint32_t frame = pcm | pcm << 16U;
        if constexpr (std::endian::native == std::endian::big)
            frame = __builtin_bswap32(frame);
        std::memcpy(into + i * bytesPerFrame, &frame, bytesPerFrame);
    }
}

/// How many frames one pass of the pattern lasts, rounded half up.
std::size_t frameCount(const RenderPattern& pattern) {
    const double frames =
        (60 / pattern.tempo) * 0.25 * exportSampleRate * static_cast<double>(pattern.totalTicks);
    return static_cast<std::size_t>(std::llround(frames));
}

} // namespace

std::string wavData(std::span<const float> mono) {
    std::string bytes = header(mono.size());
    const std::size_t start = bytes.size();
    bytes.resize(start + mono.size() * bytesPerFrame);
    convert(mono, bytes.data() + start);
    return bytes;
}

void exportProject(const Project& project, const std::filesystem::path& url, AtomicFile& files) {
    if (!project.hasNotes())
        throw ExportError(ExportError::Kind::empty, "There are no notes to export yet.");
    Project onePass = project;
    onePass.loop = false;
    const auto pattern = std::make_shared<const RenderPattern>(onePass);
    ChipCore core(pattern, exportSampleRate);
    const auto putSound = [&](const AtomicFile::Put& put) {
        const std::size_t frames = frameCount(*pattern);
        put(header(frames));
        std::vector<float> samples(blockFrames);
        std::vector<char> piece(pieceFrames * bytesPerFrame);
        for (std::size_t done = 0, inPiece = 0; done < frames;) {
            const auto block = std::span(samples).first(std::min(blockFrames, frames - done));
            core.render(block);
            convert(block, piece.data() + inPiece * bytesPerFrame);
            done += block.size();
            inPiece += block.size();
            if (inPiece == pieceFrames || done == frames)
                put({piece.data(), std::exchange(inPiece, 0) * bytesPerFrame});
        }
    };
    try {
        files.write(url, putSound);
    } catch (const std::system_error& error) {
        throw ExportError(ExportError::Kind::writeFailed, description(error));
    }
}

} // namespace mossbit::WAVExporter
