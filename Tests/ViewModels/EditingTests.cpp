#include "Tests/Support/ViewModelHarness.h"

#include <functional>
#include <limits>
#include <tuple>

namespace mossbit {
namespace {

using Selection = ProjectViewModel::Selection;

using Editing = ViewModelTest;

TEST_F(Editing, AddsANoteOfOneGridStepOnTheGrid) {
    using enum GridDivision;
    using Case = std::tuple<GridDivision, std::int64_t, std::int64_t, std::int64_t>;
    for (const auto& [grid, start, storedStart, storedLength] :
         {Case{quarter, 7, 4, 4}, Case{quarter, 63, 60, 4}, Case{eighth, 3, 2, 2},
          Case{sixteenth, -5, 0, 1}}) {
        restart(song({.grid = grid}).note(60, 0, 64));
        model->addNote(61, start);
        ASSERT_EQ(model->selectedChannel().notes.size(), 2U);
        const Note& added = model->selectedChannel().notes[1];
        EXPECT_EQ(
            added,
            (Note{.id = added.id, .pitch = 61, .start = storedStart, .length = storedLength}));
        EXPECT_EQ(model->selection(), Selection{added.id});
    }
    restart(Project());
    model->addNote(60, 64);
    model->addNote(60, std::numeric_limits<std::int64_t>::max());
    EXPECT_FALSE(model->project().hasNotes() || model->canUndo() || model->hasUnsavedChanges());
}

TEST_F(Editing, UpdatesOnlyTheFieldsGivenAndRecordsNoStep) {
    restart(song().note(60, 4, 2));
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

    // A note of another channel is neither found nor touched.
    model->setSelectedChannelIndex(3);
    EXPECT_EQ(model->note(note.id), std::nullopt);
    EXPECT_EQ(update({.start = 8}), 0);
}

TEST_F(Editing, DeletesNotesInOneStepEach) {
    restart(song().note(60, 0, 1).note(61, 1, 1).note(62, 2, 1).note(63, 3, 1));
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
    using Change = std::function<void()>;
    // The second of each pair asks for what the first has stored.
    const std::pair<Change, Change> pairs[] = {
        {[&] { model->setTempo(-1); }, [&] { model->setTempo(40); }},
        {[&] { model->setTempo(301); }, [&] { model->setTempo(300); }},
        {[&] { model->setBars(16); }, [&] { model->setBars(3); }},
        {[&] { model->setVolume(-1, 2); }, [&] { model->setVolume(0, 2); }},
        {[&] { model->setVolume(20, 2); }, [&] { model->setVolume(15, 2); }},
        {[&] { model->setDuty(Duty::d75, 2); }, [&] { model->setDuty(Duty::d75, 2); }},
        {[&] { model->setWavePreset(WavePreset::hollow, 2); },
         [&] { model->setWavePreset(WavePreset::hollow, 2); }},
        {[&] { model->setGrid(GridDivision::quarter); },
         [&] { model->setGrid(GridDivision::quarter); }},
    };
    for (const auto& [change, same] : pairs) {
        harness.heard.clear();
        change();
        same();
        EXPECT_EQ(harness.heard["project"], 1);
        model->undo();
        EXPECT_EQ(model->project(), Project());
        EXPECT_FALSE(model->canUndo());
    }
}

TEST_F(Editing, UndoTellsObserversOnlyWhatChanges) {
    model->setTempo(99);
    EXPECT_EQ(harness.takeHeard(),
              (std::map<std::string, int>{{"project", 1}, {"unsaved", 1}, {"history", 1}}));
    model->setTempo(98);
    EXPECT_EQ(harness.takeHeard(), (std::map<std::string, int>{{"project", 1}}));
    // A click on a note leaves a step without a change.
    model->pushUndo();
    model->undo();
    EXPECT_EQ(harness.takeHeard(), (std::map<std::string, int>{{"history", 1}}));
}

} // namespace
} // namespace mossbit
