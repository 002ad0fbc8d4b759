#include "Models/Project.h"

#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace mossbit {
namespace {

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
    using Case = std::tuple<ChannelKind, int, bool>;
    for (const auto& [kind, pitch, isKept] :
         {Case{ChannelKind::pulse1, 35, false}, Case{ChannelKind::pulse1, 36, true},
          Case{ChannelKind::wave, 96, true}, Case{ChannelKind::wave, 97, false},
          Case{ChannelKind::noise, -1, false}, Case{ChannelKind::noise, 0, true},
          Case{ChannelKind::noise, 3, true}, Case{ChannelKind::noise, 4, false}}) {
        Project project = song({}).on(kind).note(pitch, 0, 1);
        project.clampNotes();
        EXPECT_EQ(project.hasNotes(), isKept) << pitch;
    }
}

TEST(PitchRange, NamesOctavesFromC) {
    using Case = std::pair<int, const char*>;
    for (const auto& [pitch, name] : {Case{36, "C2"}, Case{61, "C#4"}, Case{70, "A#4"},
                                      Case{95, "B6"}, Case{96, "C7"}, Case{-1, "B-1"}})
        EXPECT_EQ(PitchRange::name(pitch), name);
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
