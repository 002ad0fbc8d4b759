#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"
#include "Tests/Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>

namespace mossbit {
namespace {

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
    const ScratchFolder folder;
    PosixAtomicFile files;
    for (const auto& [name, expected] : checksums) {
        const Project project = ProjectStore::read(examples / name);
        EXPECT_TRUE(ProjectStore::encode(project) == bytesOf(examples / name)) << name;
        WAVExporter::exportProject(project, folder / "out.wav", files);
        const std::uint64_t sound = checksum(bytesOf(folder / "out.wav"));
        EXPECT_EQ(sound, expected) << name << std::hex << ": now 0x" << sound;
    }
}

} // namespace
} // namespace mossbit
