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
    {"acorn-dance.mossbit", 0x71A248F0F23F2A42},  {"firefly-chase.mossbit", 0x5B0848B9AEB0E3CB},
    {"moonlit-pond.mossbit", 0x3AFE4C53CBE80940}, {"pebble-hop.mossbit", 0x33EAF0BD3D524B4E},
    {"tiny-victory.mossbit", 0x9DA6398C1F8B587E},
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
