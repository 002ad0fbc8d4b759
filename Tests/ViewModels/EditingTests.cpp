#include "Tests/Support/ViewModelHarness.h"

#include <QSignalSpy>

namespace mossbit {
namespace {

struct Editing : ViewModelTest {
    QSignalSpy projectChanges{model.get(), &ProjectViewModel::projectChanged};
    QSignalSpy unsavedChanges{model.get(), &ProjectViewModel::hasUnsavedChangesChanged};
    QSignalSpy historyChanges{model.get(), &ProjectViewModel::historyChanged};
};

TEST_F(Editing, AddsNotesOnTheGridInsideThePatternOnly) {
    model->setGrid(GridDivision::quarter);
    EXPECT_EQ(model->addNote(60, 63)->start, 60);
    EXPECT_EQ(model->addNote(60, -5)->start, 0);
    EXPECT_FALSE(model->addNote(60, 64) || model->addNote(60, INT64_MAX));
    EXPECT_EQ(model->selectedChannel().notes.size(), 2U);
}

TEST_F(Editing, FewerBarsCutNotesOffUntilTheyAreUndone) {
    const Project before = song().note(60, 10, 20).note(61, 40, 1);
    restart(before);
    model->selectAll();
    model->setBars(1);
    const auto& notes = model->selectedChannel().notes;
    ASSERT_EQ(notes.size(), 1U);
    EXPECT_EQ(notes[0].length, 6);
    EXPECT_EQ(model->selection(), ProjectViewModel::Selection{notes[0].id});
    model->undo();
    EXPECT_EQ(model->project(), before);
}

TEST_F(Editing, SettingsAreClampedAndRecordAStepOnlyIfTheyChange) {
    const Project& project = model->project();
    using Settings = std::array<std::int64_t, 3>;
    const auto afterSetting = [&](std::int64_t value) {
        model->setTempo(value);
        model->setVolume(value, 2);
        model->setBars(value);
        return Settings{project.tempo, project.channels[2].volume, project.bars};
    };
    EXPECT_EQ(afterSetting(-1), (Settings{40, 0, 4}));
    EXPECT_EQ(afterSetting(301), (Settings{300, 15, 4}));
    EXPECT_EQ(afterSetting(999), (Settings{300, 15, 4}));
    EXPECT_EQ(afterSetting(16), (Settings{40, 15, 16}));
    EXPECT_EQ(projectChanges.size(), 6);
    for (int step = 0; step < 6; ++step)
        model->undo();
    EXPECT_EQ(project, Project());
    EXPECT_FALSE(model->canUndo());
}

TEST_F(Editing, UndoLeadsTwoHundredStepsBackAndForthAgain) {
    for (int tempo = 41; tempo <= 241; ++tempo)
        model->setTempo(tempo);
    while (model->canUndo())
        model->undo();
    EXPECT_EQ(model->project().tempo, 41);
    while (model->canRedo())
        model->redo();
    EXPECT_EQ(model->project().tempo, 241);
}

TEST_F(Editing, TellsObserversOnlyWhatChanges) {
    model->setTempo(99);
    model->setTempo(98);
    // A click on a note leaves a step without a change.
    model->pushUndo();
    model->updateNote({}, {});
    model->undo();
    EXPECT_EQ(projectChanges.size(), 2);
    EXPECT_EQ(unsavedChanges.size(), 1);
    EXPECT_EQ(historyChanges.size(), 2);
}

} // namespace
} // namespace mossbit
