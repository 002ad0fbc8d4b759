#include "Services/WAVExporter.h"

#include "Audio/ChipCore.h"
#include "Platform/PosixAtomicFile.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace mossbit {
namespace {

std::int64_t littleEndian(const std::string& bytes, std::size_t at, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    return static_cast<std::int64_t>(value);
}

std::string exported(const Project& project) {
    const ScratchFolder folder;
    PosixAtomicFile files;
    WAVExporter::exportProject(project, folder / "out.wav", files);
    return bytesOf(folder / "out.wav");
}

TEST(WAVExporter, WritesTheHeaderOfASixteenBitStereoFile) {
    const std::string bytes = exported(song({.tempo = 120, .bars = 1}).note(60, 0, 1));
    ASSERT_EQ(bytes.size(), 352844U);
    EXPECT_EQ(bytes.substr(0, 4), "RIFF");
    EXPECT_EQ(littleEndian(bytes, 4, 4), 352836);
    EXPECT_EQ(bytes.substr(8, 8), "WAVEfmt ");
    struct Field {
        std::size_t at, size;
        std::int64_t value;
    };
    for (const Field& field :
         {Field{16, 4, 16}, Field{20, 2, 1}, Field{22, 2, 2}, Field{24, 4, 44100},
          Field{28, 4, 176400}, Field{32, 2, 4}, Field{34, 2, 16}, Field{40, 4, 352800}})
        EXPECT_EQ(littleEndian(bytes, field.at, field.size), field.value) << field.at;
    EXPECT_EQ(bytes.substr(36, 4), "data");
}

TEST(WAVExporter, TruncatesSamplesTowardsZeroOntoBothChannels) {
    const std::array<std::pair<float, int>, 9> cases = {{{1.0F, 32767},
                                                         {7.0F, 32767},
                                                         {0.5F, 16383},
                                                         {-0.5F, -16383},
                                                         {-1.0F, -32767},
                                                         {-9.0F, -32767},
                                                         {0, 0},
                                                         {0.00003F, 0},
                                                         {-0.00003F, 0}}};
    for (const auto& [sample, value] : cases) {
        const std::string bytes = WAVExporter::wavData(std::span(&sample, 1));
        ASSERT_EQ(bytes.size(), 48U);
        for (const std::size_t at : {44U, 46U})
            EXPECT_EQ(static_cast<std::int16_t>(littleEndian(bytes, at, 2)), value) << sample;
    }
    EXPECT_EQ(WAVExporter::wavData({}).size(), 44U);
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

TEST(WAVExporter, HoldsWhatTheCoreRenders) {
    const Project project = song({.tempo = 133, .bars = 2})
                                .note(60, 0, 4)
                                .note(67, 4, 2)
                                .on(ChannelKind::noise)
                                .note(0, 0, 1)
                                .note(2, 30, 2);
    const std::string bytes = exported(project);
    std::vector<float> samples((bytes.size() - 44) / 4);
    ChipCore core(std::make_shared<const RenderPattern>(project), 44100);
    core.render(samples);
    EXPECT_TRUE(bytes == WAVExporter::wavData(samples));
}

TEST(WAVExporter, RefusesASongWithoutNotesButNotAMutedOne) {
    const ScratchFolder folder;
    PosixAtomicFile files;
    const auto target = folder / "out.wav";
    try {
        WAVExporter::exportProject(Project(), target, files);
        FAIL() << "exported nothing";
    } catch (const ExportError& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::empty);
        EXPECT_STREQ(error.what(), "There are no notes to export yet.");
    }
    EXPECT_FALSE(std::filesystem::exists(target));
    const std::string muted = exported(song({.bars = 1}).muted().note(60, 0, 4));
    EXPECT_TRUE(muted.find_first_not_of('\0', 44) == std::string::npos);
}

TEST(WAVExporter, ReportsTheSystemsWordsAndKeepsTheOldFile) {
    const ScratchFolder folder;
    const auto target = folder / "out.wav";
    PosixAtomicFile().write(target, "old");
    PosixFileCalls full = PosixFileCalls::real();
    full.write = [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    PosixAtomicFile files(full);
    try {
        WAVExporter::exportProject(song({}).note(60, 0, 1), target, files);
        FAIL() << "wrote to a full disk";
    } catch (const ExportError& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::writeFailed);
        EXPECT_STREQ(error.what(), std::strerror(ENOSPC));
    }
    EXPECT_EQ(bytesOf(target), "old");
}

} // namespace
} // namespace mossbit
