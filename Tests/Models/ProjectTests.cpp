#include "Models/Project.h"

#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

namespace mossbit {
namespace {

TEST(Project, DefaultHasFourEmptyChannelsInOrder) {
    const Project project;
    ASSERT_EQ(project.channels.size(), 4U);
    const std::array<std::string_view, 4> ids = {"pulse1", "pulse2", "wave", "noise"};
    for (std::size_t i = 0; i < ids.size(); ++i) {
        EXPECT_EQ(project.channels[i].id(), ids[i]);
        EXPECT_EQ(project.channels[i].volume, i == 3 ? 13 : 11);
        EXPECT_EQ(project.channels[i].duty, i == 1 ? Duty::d25 : Duty::d50);
        EXPECT_TRUE(project.channels[i].notes.empty());
    }
    EXPECT_FALSE(project.hasNotes());
}

TEST(Project, ClampNotesKeepsNotesInsideThePattern) {
    struct Case {
        std::int64_t start, length, keptStart, keptLength;
    };
    constexpr std::int64_t dropped = -1;
    for (const Case& c : {Case{60, 10, 60, 4}, Case{64, 1, dropped, 0}, Case{-3, 5, 0, 5},
                          Case{0, 0, 0, 1}, Case{63, -7, 63, 1}, Case{0, INT64_MAX, 0, 64},
                          Case{INT64_MIN, INT64_MAX, 0, 64}, Case{INT64_MAX, 1, dropped, 0}}) {
        Project project = song({.bars = 4}).note(60, c.start, c.length);
        const Uuid id = project.channels[0].notes[0].id;
        project.clampNotes();
        if (c.keptStart == dropped) {
            EXPECT_FALSE(project.hasNotes()) << c.start;
            continue;
        }
        ASSERT_TRUE(project.hasNotes()) << c.start;
        const Note expected = {.id = id, .pitch = 60, .start = c.keptStart, .length = c.keptLength};
        EXPECT_EQ(project.channels[0].notes[0], expected);
    }
}

TEST(Project, ClampNotesDropsPitchesThatTheChannelCannotPlay) {
    Project project = song({})
                          .note(35, 0, 1)
                          .note(36, 1, 1)
                          .note(96, 2, 1)
                          .note(97, 3, 1)
                          .note(2, 4, 1)
                          .on(ChannelKind::noise)
                          .note(-1, 0, 1)
                          .note(0, 1, 1)
                          .note(3, 2, 1)
                          .note(4, 3, 1);
    project.clampNotes();
    const auto starts = [&](std::size_t channel) {
        std::vector<std::int64_t> result;
        for (const Note& note : project.channels[channel].notes)
            result.push_back(note.start);
        return result;
    };
    EXPECT_EQ(starts(0), (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(starts(3), (std::vector<std::int64_t>{1, 2}));
}

TEST(PitchRange, NamesOctavesFromC) {
    EXPECT_EQ(PitchRange::name(36), "C2");
    EXPECT_EQ(PitchRange::name(60), "C4");
    EXPECT_EQ(PitchRange::name(61), "C#4");
    EXPECT_EQ(PitchRange::name(70), "A#4");
    EXPECT_EQ(PitchRange::name(95), "B6");
    EXPECT_EQ(PitchRange::name(96), "C7");
    EXPECT_EQ(PitchRange::name(-1), "B-1");
}

TEST(Note, IsHashedAndComparedOverAllFields) {
    const Note note;
    EXPECT_NE(note.id, Note{}.id);
    std::unordered_set<Note> seen = {note};
    for (std::int64_t Note::*field : {&Note::pitch, &Note::start, &Note::length, &Note::velocity}) {
        Note other = note;
        other.*field += 1;
        EXPECT_TRUE(seen.insert(other).second);
    }
    EXPECT_FALSE(seen.insert(note).second);
}

TEST(Uuid, ReadsOnlyTheStandardTextForm) {
    const std::string text = "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B37";
    const auto uuid = Uuid::parse(text);
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->bytes[0], 0x8B);
    EXPECT_EQ(uuid->text(), text);
    EXPECT_EQ(Uuid::parse("8b1f3c2e-5d4a-4e7b-9c10-2f6a8d4e1b37"), uuid);
    using namespace std::string_view_literals;
    for (const std::string_view bad :
         {""sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3"sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B377"sv,
          "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3G"sv, "8B1F3C2E-5D4A-4E7B-9C10+2F6A8D4E1B37"sv,
          "{8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B}"sv, "8B1F3C2E-5D4A-4E7B-9C10-2F6A8D4E1B3\0"sv})
        EXPECT_FALSE(Uuid::parse(bad)) << bad;
}

} // namespace
} // namespace mossbit
