#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace mossbit {
namespace {

using Selection = ProjectViewModel::Selection;

struct Editing : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model = harness.start(Project());

    const Note& lastNote() const { return model->selectedChannel().notes.back(); }
};

TEST_F(Editing, AddsANoteOfOneGridStepOnTheGrid) {
    constexpr std::int64_t nothing = -1;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    struct Case {
        GridDivision grid;
        std::int64_t start, storedStart, storedLength;
    };
    for (const Case& c : {Case{GridDivision::quarter, 7, 4, 4},
                          {GridDivision::quarter, 63, 60, 4},
                          {GridDivision::quarter, 64, nothing, 0},
                          {GridDivision::eighth, 3, 2, 2},
                          {GridDivision::sixteenth, -5, 0, 1},
                          {GridDivision::sixteenth, 63, 63, 1},
                          {GridDivision::sixteenth, most, nothing, 0}}) {
        model = harness.start(song({.grid = c.grid}).note(60, 0, 64));
        model->addNote(61, c.start);
        if (c.storedStart == nothing) {
            EXPECT_EQ(model->selectedChannel().notes.size(), 1U);
            EXPECT_FALSE(model->canUndo() || model->hasUnsavedChanges());
            continue;
        }
        const Note expected = {
            .id = lastNote().id, .pitch = 61, .start = c.storedStart, .length = c.storedLength};
        ASSERT_EQ(model->selectedChannel().notes.size(), 2U);
        EXPECT_EQ(lastNote(), expected);
        EXPECT_EQ(model->selection(), Selection{expected.id});
    }
}

TEST_F(Editing, UpdatesOnlyTheFieldsGivenAndRecordsNoStep) {
    model = harness.start(song({}).note(60, 4, 2).on(ChannelKind::noise).note(1, 0, 1));
    Note note = model->project().channels[0].notes[0];
    const auto update = [&](const ProjectViewModel::NoteChange& change) {
        harness.heard.clear();
        model->updateNote(note.id, change);
        return harness.heard["project"];
    };
    EXPECT_EQ(update({.length = 900}), 1);
    EXPECT_EQ(update({.pitch = -3, .start = -7}), 1);
    note = {.id = note.id, .pitch = -3, .start = -7, .length = 900};
    EXPECT_EQ(model->note(note.id), note);
    EXPECT_EQ(update({.pitch = -3}), 0);
    EXPECT_FALSE(model->canUndo());

    // A note of another channel is neither found nor touched, yet the drag reports a change.
    model = harness.start(model->project());
    model->setSelectedChannelIndex(3);
    const Project before = model->project();
    EXPECT_EQ(model->note(note.id), std::nullopt);
    EXPECT_EQ(update({.start = 8}), 0);
    EXPECT_EQ(model->project(), before);
    EXPECT_TRUE(model->hasUnsavedChanges());
    EXPECT_EQ(harness.loop.pendingCount(), 1U);
}

TEST_F(Editing, DeletesNotesInOneStepEach) {
    model = harness.start(song({}).note(60, 0, 1).note(61, 1, 1).note(62, 2, 1).note(63, 3, 1));
    const auto notes = model->selectedChannel().notes;
    model->setSelection({notes[1].id, notes[3].id});
    model->deleteNote(notes[1].id);
    EXPECT_EQ(model->selection(), Selection{notes[3].id});
    model->deleteNote(Uuid::random());
    EXPECT_EQ(harness.heard["project"], 1);

    model->setSelection({notes[0].id, notes[2].id});
    model->deleteSelection();
    EXPECT_EQ(model->selectedChannel().notes, std::vector{notes[3]});
    EXPECT_TRUE(model->selection().empty());
    model->undo();
    EXPECT_EQ(model->selectedChannel().notes, (std::vector{notes[0], notes[2], notes[3]}));
}

TEST_F(Editing, SettingsAreClampedAndRecordAStepOnlyIfTheyChange) {
    const auto wave = [](const Project& p) { return p.channels[2]; };
    const struct {
        std::function<void(ProjectViewModel&)> set;
        std::function<bool(const Project&)> holds;
        int steps;
    } cases[] = {
        {[](auto& m) { m.setTempo(301); }, [](auto& p) { return p.tempo == 300; }, 1},
        {[](auto& m) { m.setTempo(39); }, [](auto& p) { return p.tempo == 40; }, 1},
        {[](auto& m) { m.setTempo(120); }, [](auto& p) { return p.tempo == 120; }, 0},
        {[](auto& m) { m.setBars(3); }, [](auto& p) { return p.bars == 4; }, 0},
        {[](auto& m) { m.setBars(16); }, [](auto& p) { return p.bars == 16; }, 1},
        {[](auto& m) { m.setVolume(20, 2); }, [=](auto& p) { return wave(p).volume == 15; }, 1},
        {[](auto& m) { m.setVolume(-1, 2); }, [=](auto& p) { return wave(p).volume == 0; }, 1},
        {[](auto& m) { m.setVolume(11, 2); }, [=](auto& p) { return wave(p).volume == 11; }, 0},
        {[](auto& m) { m.setDuty(Duty::d75, 2); },
         [=](auto& p) { return wave(p).duty == Duty::d75; }, 1},
        {[](auto& m) { m.setWavePreset(WavePreset::hollow, 2); },
         [=](auto& p) { return wave(p).wave == WavePreset::hollow; }, 1},
        {[](auto& m) { m.setGrid(GridDivision::quarter); },
         [](auto& p) { return p.gridStep() == 4; }, 1},
        {[](auto& m) { m.toggleLoop(); }, [](auto& p) { return !p.loop; }, 1},
        {[](auto& m) { m.toggleMute(2); }, [=](auto& p) { return wave(p).muted; }, 1},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        model = harness.start(Project());
        harness.heard.clear();
        cases[i].set(*model);
        EXPECT_TRUE(cases[i].holds(model->project())) << i;
        EXPECT_EQ(model->hasUnsavedChanges(), cases[i].steps > 0) << i;
        EXPECT_EQ(harness.heard["project"], cases[i].steps) << i;
    }
}

} // namespace
} // namespace mossbit
