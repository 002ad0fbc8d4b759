#include "Tests/Support/FullSong.h"
#include "Tests/Support/ViewModelHarness.h"

#include <malloc.h>

namespace mossbit {
namespace {

using Heard = std::map<std::string, int>;

using History = ViewModelTest;

TEST_F(History, UndoTellsObserversOnlyWhatChanges) {
    model->setTempo(99);
    EXPECT_EQ(harness.takeHeard(), (Heard{{"project", 1}, {"unsaved", 1}, {"history", 1}}));
    model->setTempo(98);
    EXPECT_EQ(harness.takeHeard(), (Heard{{"project", 1}}));
    // A click on a note leaves a step without a change.
    model->pushUndo();
    model->undo();
    EXPECT_EQ(harness.takeHeard(), (Heard{{"history", 1}}));
}

TEST_F(History, AFullHistoryOfAFullSongStaysUnder20Megabytes) {
    model = harness.start(fullSong());
    const std::size_t before = mallinfo2().uordblks;
    for (int edit = 0; edit < 400; ++edit)
        model->toggleLoop();
    EXPECT_LT(mallinfo2().uordblks - before, 20'000'000U);
}

TEST_F(History, AutosaveWritesOnceAfterABurstOfChanges) {
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

TEST_F(History, AutosaveWritesTheFileOfItsEditTooAndClearsTheFlagEvenIfThatFails) {
    const auto file = harness.store("song.mossbit", Project());
    model->open(file);
    model->setTempo(99);
    harness.pass(0.81);
    EXPECT_EQ(harness.files.written, (std::vector{harness.autosave, file}));
    EXPECT_EQ(saved(file), model->project());
    EXPECT_FALSE(model->hasUnsavedChanges());

    harness.files.failure = ENOSPC;
    model->setTempo(98);
    harness.pass(0.81);
    EXPECT_EQ(saved(file).tempo, 99);
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_EQ(model->alertMessage(), std::nullopt);

    // Also when the document has been saved elsewhere meanwhile.
    harness.files.failure = 0;
    model->setTempo(97);
    harness.dialogs.saveAnswers = {harness.folder / "copy.mossbit"};
    model->saveAs();
    harness.pass(0.81);
    EXPECT_EQ(saved(file).tempo, 97);
}

} // namespace
} // namespace mossbit
