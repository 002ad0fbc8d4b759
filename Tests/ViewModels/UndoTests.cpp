#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <malloc.h>

namespace mossbit {
namespace {

using Heard = std::map<std::string, int>;

struct Undo : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model = harness.start(Project());
};

TEST_F(Undo, KeepsTheLast200Steps) {
    for (int edit = 1; edit <= 201; ++edit)
        model->setTempo(40 + edit);
    int undone = 0;
    for (; model->canUndo(); model->undo())
        ++undone;
    EXPECT_EQ(undone, 200);
    EXPECT_EQ(model->project().tempo, 41);
    model->undo();
    EXPECT_EQ(model->project().tempo, 41);
    for (; model->canRedo(); model->redo())
        --undone;
    EXPECT_EQ(undone, 0);
    EXPECT_EQ(model->project().tempo, 241);
}

TEST_F(Undo, ThereAndBackIsTheSameProjectAndAnEditEndsRedo) {
    model->addNote(60, 0);
    model->addNote(61, 1);
    const Project edited = model->project();
    model->undo();
    EXPECT_TRUE(model->selection().empty());
    model->redo();
    EXPECT_EQ(model->project(), edited);
    EXPECT_TRUE(model->selection().empty());
    model->undo();
    model->setTempo(99);
    EXPECT_FALSE(model->canRedo());
    model->redo();
    EXPECT_EQ(model->project().tempo, 99);
}

TEST_F(Undo, TellsObserversOnlyWhatChanges) {
    model->undo();
    model->redo();
    EXPECT_EQ(harness.takeHeard(), Heard{});
    model->setTempo(99);
    EXPECT_EQ(harness.takeHeard(), (Heard{{"project", 1}, {"unsaved", 1}, {"history", 1}}));
    model->setTempo(98);
    EXPECT_EQ(harness.takeHeard(), (Heard{{"project", 1}}));
    // A click on a note leaves a step without a change.
    model->pushUndo();
    model->undo();
    EXPECT_EQ(harness.takeHeard(), (Heard{{"history", 1}}));
    model->undo();
    EXPECT_EQ(harness.takeHeard(), (Heard{{"project", 1}}));
}

TEST_F(Undo, LeavesChannelFileAndPlaybackAlone) {
    model->open(harness.store("song.mossbit", song({}).note(60, 0, 4)));
    model->play();
    model->setSelectedChannelIndex(2);
    model->setTempo(99);
    harness.pass(1);
    EXPECT_FALSE(model->hasUnsavedChanges());
    model->undo();
    EXPECT_TRUE(model->hasUnsavedChanges());
    EXPECT_EQ(model->selectedChannelIndex(), 2);
    EXPECT_EQ(model->documentName(), "song");
    EXPECT_TRUE(model->isPlaying());
}

TEST_F(Undo, AFullHistoryOfAFullSongStaysUnder20Megabytes) {
    SongBuilder full = song({.bars = 16});
    for (const ChannelKind kind : allChannelKinds)
        for (int tick = 0; tick < 256; ++tick)
            full.on(kind).note(kind == ChannelKind::noise ? 1 : 60, tick, 1);
    model = harness.start(full);
    const std::size_t before = mallinfo2().uordblks;
    for (int edit = 0; edit < 400; ++edit)
        model->toggleLoop();
    const std::size_t used = mallinfo2().uordblks - before;
    EXPECT_LT(used, 20'000'000U);
    RecordProperty("bytes", std::to_string(used));
}

struct Autosave : Undo {
    Project saved(const std::filesystem::path& path) { return ProjectStore::read(path); }
};

TEST_F(Autosave, WritesOnceAfterABurstOfChanges) {
    model->setTempo(99);
    harness.pass(0.3);
    model->setTempo(98);
    harness.pass(0.799);
    EXPECT_TRUE(harness.files.written.empty());
    harness.pass(0.002);
    EXPECT_EQ(harness.files.written, std::vector{harness.autosave});
    EXPECT_EQ(saved(harness.autosave), model->project());
    EXPECT_TRUE(model->hasUnsavedChanges());
    harness.pass(10);
    EXPECT_EQ(harness.files.written.size(), 1U);
}

TEST_F(Autosave, WritesTheDocumentsFileTooAndClearsTheFlagEvenIfThatFails) {
    const auto file = harness.store("song.mossbit", Project());
    model->open(file);
    harness.takeHeard();
    model->setTempo(99);
    harness.pass(0.81);
    EXPECT_EQ(harness.files.written, (std::vector{harness.autosave, file}));
    EXPECT_EQ(saved(file), model->project());
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_EQ(harness.takeHeard()["unsaved"], 2);

    harness.fault = {FileFault::Step::write, ENOSPC};
    model->setTempo(98);
    harness.pass(0.81);
    EXPECT_EQ(saved(file).tempo, 99);
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_EQ(model->alertMessage(), std::nullopt);
}

TEST_F(Autosave, FlushWritesAtOnceAndNothingLater) {
    const auto file = harness.store("song.mossbit", Project());
    model->open(file);
    model->setTempo(99);
    model->flushAutosave();
    EXPECT_EQ(saved(harness.autosave).tempo, 99);
    EXPECT_EQ(saved(file).tempo, 99);
    EXPECT_TRUE(model->hasUnsavedChanges());
    harness.pass(2);
    EXPECT_EQ(harness.files.written.size(), 2U);
}

TEST_F(Autosave, WithoutALocationNothingIsEverWritten) {
    ProjectViewModel other(harness.services(), std::nullopt, std::nullopt);
    other.addNote(60, 0);
    harness.pass(1);
    other.flushAutosave();
    other.open(harness.store("song.mossbit", Project()));
    EXPECT_TRUE(harness.files.written.empty());
}

TEST_F(Autosave, KeepsToTheFileOfItsEditWhenTheDocumentIsSavedElsewhere) {
    const auto file = harness.store("song.mossbit", Project());
    model->open(file);
    model->setTempo(99);
    harness.dialogs.saveAnswers = {harness.folder / "copy.mossbit"};
    model->saveAs();
    harness.files.written.clear();
    harness.pass(1);
    EXPECT_EQ(harness.files.written, (std::vector{harness.autosave, file}));
}

} // namespace
} // namespace mossbit
