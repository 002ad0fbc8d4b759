#include "Services/WAVExporter.h"

#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectStore.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <utility>

namespace mossbit {
namespace {

std::string exported(const Project& project) {
    const ScratchFolder folder;
    PosixAtomicFile files;
    WAVExporter::exportProject(project, folder / "out.wav", files);
    return bytesOf(folder / "out.wav");
}

TEST(WAVExporter, TruncatesSamplesTowardsZeroOntoBothChannels) {
    using Case = std::pair<float, int>;
    for (const auto& [sample, value] :
         {Case{7.0F, 32767}, Case{0.5F, 16383}, Case{-0.5F, -16383}, Case{-1.0F, -32767},
          Case{-9.0F, -32767}, Case{0.00003F, 0}, Case{-0.00003F, 0}}) {
        const char low = static_cast<char>(value), high = static_cast<char>(value >> 8);
        const std::string bytes = WAVExporter::wavData(std::span(&sample, 1));
        EXPECT_EQ(bytes.substr(44), (std::string{low, high, low, high})) << sample;
    }
}

TEST(WAVExporter, LastsExactlyOnePassAndIgnoresTheLoopSwitch) {
    // 16 ticks of 60 / tempo / 4 seconds; the last row's 16 × 1230.4651… frames are rounded.
    for (const auto& [tempo, frames] :
         {std::pair{120, 88200}, {40, 264600}, {300, 35280}, {129, 82047}}) {
        const Project once = song({.tempo = tempo, .bars = 1, .loop = false}).note(60, 15, 1);
        Project looped = once;
        looped.loop = true;
        const std::string bytes = exported(once);
        EXPECT_EQ(bytes.size(), 44U + static_cast<std::size_t>(frames) * 4) << tempo;
        EXPECT_TRUE(bytes == exported(looped)) << tempo;
    }
}

TEST(WAVExporter, IsSilentWhereEveryNoteIsMuted) {
    const std::string muted = exported(song({.bars = 1}).muted().note(60, 0, 4));
    EXPECT_EQ(muted.find_first_not_of('\0', 44), std::string::npos);
}

/// FNV-1a of each example's whole WAV file. The bytes are the same on every machine, from every
/// compiler and in every build. If one changes and its song did not, every song of every user
/// sounds different now: store the new number only if that is meant, and say so in the commit.
const std::map<std::string, std::uint64_t> checksums = {
    {"a-beginning.mossbit", 0x295ABB3719FE1ABE},   {"acorn-dance.mossbit", 0xF9ADB06A87CDE676},
    {"firefly-chase.mossbit", 0x1DF11E4BC687A1DB}, {"moonlit-pond.mossbit", 0x1AE980417D7365AC},
    {"pebble-hop.mossbit", 0x091863EE220B776A},    {"tiny-victory.mossbit", 0x52FFEF72B057AD9A},
};

const std::filesystem::path examples = MOSSBIT_EXAMPLES;

std::uint64_t checksum(std::string_view bytes) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char byte : bytes)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    return hash;
}

/// Their bytes are also how a song is laid out in its file.
TEST(ExampleSongs, KeepTheirBytesAndTheirSound) {
    for (const auto& [name, expected] : checksums) {
        const Project project = ProjectStore::read(examples / name);
        EXPECT_TRUE(ProjectStore::encode(project) == bytesOf(examples / name)) << name;
        const std::uint64_t sound = checksum(exported(project));
        EXPECT_EQ(sound, expected) << name << std::hex << ": now 0x" << sound;
    }
}

} // namespace
} // namespace mossbit
