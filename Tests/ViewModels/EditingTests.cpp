#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace mossbit {
namespace {

using Heard = std::map<std::string, int>;
using Selection = ProjectViewModel::Selection;

struct Editing : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model = harness.start(Project());

    const Note& lastNote() const { return model->selectedChannel().notes.back(); }

    /// How many undo steps there are, found by undoing them all and redoing them.
    int stepCount() {
        int steps = 0;
        for (; model->canUndo(); model->undo())
            ++steps;
        for (int step = 0; step < steps; ++step)
            model->redo();
        return steps;
    }
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
        EXPECT_EQ(stepCount(), 1);
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
    note.length = 900;
    EXPECT_EQ(update({.length = 900}), 1);
    EXPECT_EQ(model->note(note.id), note);
    note.pitch = -3;
    note.start = -7;
    EXPECT_EQ(update({.pitch = -3, .start = -7}), 1);
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
    model->deleteSelection();
    EXPECT_FALSE(model->hasUnsavedChanges());

    model->setSelection({notes[1].id, notes[3].id});
    model->deleteNote(notes[1].id);
    EXPECT_EQ(model->selection(), Selection{notes[3].id});
    model->deleteNote(Uuid::random());
    EXPECT_EQ(harness.heard["project"], 1);
    EXPECT_EQ(stepCount(), 2);

    model->setSelection({notes[0].id, notes[2].id});
    model->deleteSelection();
    EXPECT_EQ(model->selectedChannel().notes, std::vector{notes[3]});
    EXPECT_TRUE(model->selection().empty());
    model->undo();
    EXPECT_EQ(model->selectedChannel().notes, (std::vector{notes[0], notes[2], notes[3]}));
}

TEST_F(Editing, SelectionBelongsToTheSelectedChannel) {
    model = harness.start(song({}).note(60, 0, 1).note(61, 1, 1));
    model->selectAll();
    model->selectAll();
    model->setSelectedChannelIndex(0);
    EXPECT_EQ(model->selection().size(), 2U);
    EXPECT_EQ(harness.takeHeard(), (Heard{{"selection", 1}}));
    model->setSelectedChannelIndex(1);
    EXPECT_TRUE(model->selection().empty());
    EXPECT_EQ(harness.takeHeard(), (Heard{{"selection", 1}, {"channel", 1}}));
    EXPECT_FALSE(model->canUndo() || model->hasUnsavedChanges());
}

TEST_F(Editing, SettingsAreClampedAndRecordAStepOnlyIfTheyChange) {
    using Model = ProjectViewModel;
    struct Case {
        const char* name;
        std::function<void(Model&)> set;
        std::function<std::int64_t(const Project&)> read;
        std::int64_t expected;
        int steps;
    };
    const auto tempo = [](const Project& p) { return p.tempo; };
    const auto bars = [](const Project& p) { return p.bars; };
    const auto volume = [](const Project& p) { return p.channels[2].volume; };
    const auto duty = [](const Project& p) { return std::int64_t(p.channels[1].duty); };
    const auto wave = [](const Project& p) { return std::int64_t(p.channels[0].wave); };
    const auto muted = [](const Project& p) { return std::int64_t(p.channels[3].muted); };
    for (const Case& c : {
             Case{"tempo 301", [](Model& m) { m.setTempo(301); }, tempo, 300, 1},
             Case{"tempo 39", [](Model& m) { m.setTempo(39); }, tempo, 40, 1},
             Case{"tempo 120", [](Model& m) { m.setTempo(120); }, tempo, 120, 0},
             Case{"bars 3", [](Model& m) { m.setBars(3); }, bars, 4, 0},
             Case{"bars 4", [](Model& m) { m.setBars(4); }, bars, 4, 0},
             Case{"bars 16", [](Model& m) { m.setBars(16); }, bars, 16, 1},
             Case{"volume 20", [](Model& m) { m.setVolume(20, 2); }, volume, 15, 1},
             Case{"volume -1", [](Model& m) { m.setVolume(-1, 2); }, volume, 0, 1},
             Case{"volume 11", [](Model& m) { m.setVolume(11, 2); }, volume, 11, 0},
             Case{"duty 75", [](Model& m) { m.setDuty(Duty::d75, 1); }, duty, 3, 1},
             Case{"duty 25", [](Model& m) { m.setDuty(Duty::d25, 1); }, duty, 1, 0},
             Case{"hollow", [](Model& m) { m.setWavePreset(WavePreset::hollow, 0); }, wave, 2, 1},
             Case{"triangle", [](Model& m) { m.setWavePreset(WavePreset::triangle, 0); }, wave, 0,
                  0},
             Case{"grid", [](Model& m) { m.setGrid(GridDivision::quarter); },
                  [](const Project& p) { return p.gridStep(); }, 4, 1},
             Case{"same grid", [](Model& m) { m.setGrid(GridDivision::sixteenth); },
                  [](const Project& p) { return p.gridStep(); }, 1, 0},
             Case{"loop", [](Model& m) { m.toggleLoop(); },
                  [](const Project& p) { return std::int64_t(p.loop); }, 0, 1},
             Case{"mute", [](Model& m) { m.toggleMute(3); }, muted, 1, 1},
             Case{"mute twice", [](Model& m) { m.toggleMute(3), m.toggleMute(3); }, muted, 0, 2},
         }) {
        model = harness.start(Project());
        harness.heard.clear();
        c.set(*model);
        EXPECT_EQ(c.read(model->project()), c.expected) << c.name;
        EXPECT_EQ(model->hasUnsavedChanges(), c.steps > 0) << c.name;
        EXPECT_EQ(harness.heard["project"], c.steps) << c.name;
        EXPECT_EQ(stepCount(), c.steps) << c.name;
    }
}

TEST_F(Editing, FewerBarsCutNotesAndUndoBringsThemBack) {
    model = harness.start(song({.bars = 4, .grid = GridDivision::eighth})
                              .note(60, 3, 1)
                              .note(60, 30, 8)
                              .note(60, 40, 1));
    model->setGrid(GridDivision::quarter);
    const Project before = model->project();
    model->selectAll();
    model->setBars(2);
    EXPECT_EQ(model->selectedChannel().notes.size(), 2U);
    EXPECT_EQ(lastNote().length, 2);
    EXPECT_EQ(model->selection().size(), 2U);
    model->undo();
    EXPECT_EQ(model->project(), before);
    EXPECT_EQ(model->selection().size(), 2U);
}

} // namespace
} // namespace mossbit
