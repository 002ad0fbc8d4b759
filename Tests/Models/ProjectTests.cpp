#include "Models/Project.h"

#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <string>

namespace mossbit {
namespace {

TEST(Project, ClampNotesKeepsInsideThePatternWhatTheChannelCanPlay) {
    using enum ChannelKind;
    const auto clamped = [](ChannelKind kind, const Note& note) {
        Project project = song({.bars = 4}).on(kind).note(note.pitch, note.start, note.length);
        project.clampNotes();
        const auto& notes = project.channels[static_cast<std::size_t>(kind)].notes;
        return notes.empty()
                   ? "gone"
                   : std::to_string(notes[0].start) + "+" + std::to_string(notes[0].length);
    };
    EXPECT_EQ(clamped(wave, {.start = 60, .length = 10}), "60+4");
    EXPECT_EQ(clamped(wave, {.start = -3, .length = 5}), "0+5");
    EXPECT_EQ(clamped(wave, {.start = 63, .length = -7}), "63+1");
    EXPECT_EQ(clamped(wave, {.start = INT64_MIN, .length = INT64_MAX}), "0+64");
    EXPECT_EQ(clamped(wave, {.start = 64}), "gone");
    for (const int pitch : {-1, 0, 3, 4})
        EXPECT_EQ(clamped(noise, {.pitch = pitch}) == "gone", pitch < 0 || pitch > 3);
    for (const int pitch : {35, 36, 96, 97})
        EXPECT_EQ(clamped(wave, {.pitch = pitch}) == "gone", pitch < 36 || pitch > 96);
}

TEST(Uuid, ReadsOnlyTheStandardTextForm) {
    const std::string text = "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B37";
    const auto uuid = Uuid::parse(text);
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->bytes[0], 0x8B);
    EXPECT_EQ(uuid->text(), text);
    EXPECT_EQ(Uuid::parse("8b1f3c2e-5d4a-4e7b-9c10-2f6a8d4e1b37"), uuid);
    EXPECT_EQ(Uuid::random().text()[14], '4') << "the version of random ones";
    using namespace std::string_view_literals;
    for (const std::string_view bad :
         {""sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3"sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B377"sv,
          "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3G"sv, "8B1F3C2E-5D4A-4E7B-9C10+2F6A8D4E1B37"sv,
          "{8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B}"sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3\0"sv})
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
}

} // namespace
} // namespace mossbit
