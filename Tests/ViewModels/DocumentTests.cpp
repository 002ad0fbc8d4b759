#include "Tests/Support/ViewModelHarness.h"

#include <cstring>

namespace mossbit {
namespace {

namespace fs = std::filesystem;
using Shown = std::vector<std::string>;
constexpr std::size_t saveButton = 0, discardButton = 1, cancelButton = 2;

struct Document : ViewModelTest {
    const Project tune = song({.tempo = 90}).note(60, 0, 4);

    /// Opens the tune from its file and gives it another tempo.
    fs::path openAndEdit() {
        const fs::path file = harness.store("song.mossbit", tune);
        model->open(file);
        model->setTempo(91);
        return file;
    }
};

TEST_F(Document, StartsWithWhatTheAutosaveHolds) {
    harness.store("Autosave.mossbit", tune);
    model = harness.start();
    EXPECT_EQ(model->project(), tune);
    EXPECT_EQ(model->documentName(), "Untitled");
    EXPECT_FALSE(model->hasUnsavedChanges() || model->canUndo());

    for (const std::string broken : {"", "{\"tempo\": \"fast\"}"}) {
        putBytes(harness.autosave, broken);
        model = harness.start();
        EXPECT_FALSE(model->project().hasNotes() || model->alertMessage());
        model->flushAutosave();
        EXPECT_EQ(bytesOf(harness.folder / "Autosave-unreadable.mossbit"), broken);
        EXPECT_EQ(saved(harness.autosave), model->project());
    }
}

TEST_F(Document, IsNamedAfterItsFileAndSavedWithAnExtension) {
    using Case = std::array<std::string, 3>;
    for (const auto& [chosen, written, name] :
         {Case{"new", "new.mossbit", "new"}, Case{"my.song.mossbit", "my.song.mossbit", "my.song"},
          Case{"data.json", "data.json", "data"},
          Case{"Song v1.2", "Song v1.2.mossbit", "Song v1.2"},
          Case{"f\u00fcr Elise", "f\u00fcr Elise.mossbit", "f\u00fcr Elise"}}) {
        model = harness.start(tune);
        harness.dialogs.saveAnswers = {harness.folder / chosen};
        model->save();
        EXPECT_EQ(model->fileURL(), harness.folder / written);
        EXPECT_EQ(model->documentName(), name);
        EXPECT_EQ(saved(harness.folder / written), tune);
        model->exportWAV();
        model->saveAs();
        EXPECT_EQ(harness.dialogs.takeShown(),
                  (Shown{"save Untitled.mossbit", "save wav " + name + ".wav",
                         "save " + name + ".mossbit"}));
    }
}

TEST_F(Document, AsksAboutUnsavedWorkBeforeReplacingIt) {
    const struct {
        const char* name;
        bool hasFile = true;
        std::size_t button = saveButton;
        bool writeFails = false, goesOn = false;
        /// Whether the file holds the edit in the end.
        bool isSaved = false;
    } cases[] = {
        {.name = "save", .goesOn = true, .isSaved = true},
        {.name = "save untitled", .hasFile = false, .goesOn = true, .isSaved = true},
        {.name = "panel cancelled", .hasFile = false},
        {.name = "write fails", .writeFails = true},
        {.name = "discard", .button = discardButton, .goesOn = true},
        {.name = "discard untitled", .hasFile = false, .button = discardButton, .goesOn = true},
        {.name = "cancel", .button = cancelButton, .isSaved = true},
    };
    const fs::path other = harness.store("other.mossbit", song({.tempo = 200}).note(50, 0, 1));
    for (const auto& c : cases) {
        for (const std::string command : {"new", "open", "hand over"}) {
            SCOPED_TRACE(c.name + (", " + command));
            const fs::path file = harness.store("song.mossbit", tune);
            model = harness.start(tune);
            if (c.hasFile)
                model->open(file);
            model->setTempo(91);
            const Project edited = model->project();
            harness.dialogs.alertAnswers = {c.button};
            harness.dialogs.openAnswers = {other};
            harness.dialogs.saveAnswers = {c.goesOn ? std::optional(file) : std::nullopt};
            // What comes due meanwhile is kept safe, but must not reach the song's file.
            harness.dialogs.meanwhile = [&] {
                harness.files.written.clear();
                harness.pass(9);
                EXPECT_EQ(harness.files.written, std::vector{harness.autosave});
                EXPECT_TRUE(c.writeFails || saved(harness.autosave) == edited);
                EXPECT_TRUE(!c.hasFile || saved(file) == tune);
            };
            harness.files.failure = c.writeFails ? EIO : 0;
            if (command == "new")
                model->newProject();
            else if (command == "open")
                model->open();
            else
                model->openHandedOver(other);

            const Shown shown = harness.dialogs.takeShown();
            EXPECT_EQ(shown.at(0), c.hasFile ? "alert Save changes to song?"
                                             : "alert Save changes to Untitled?");
            EXPECT_EQ(std::ranges::count(shown, "open"), c.goesOn && command == "open");
            EXPECT_TRUE(model->hasUnsavedChanges() != c.goesOn && model->canUndo() != c.goesOn);
            EXPECT_EQ(model->alertMessage().has_value(), c.writeFails);
            const Project replacement = command == "new" ? Project() : saved(other);
            EXPECT_EQ(model->project(), c.goesOn ? replacement : edited);
            harness.pass(2);
            EXPECT_EQ(saved(file).tempo, c.isSaved ? 91 : 90);
        }
    }
    const Dialogs::Alert& alert = harness.dialogs.lastAlert;
    EXPECT_EQ(alert.informativeText, "Your changes will be lost if you don't save them.");
    EXPECT_EQ(alert.buttons, (std::array<std::string, 3>{"Save", "Discard", "Cancel"}));
}

TEST_F(Document, RestoredWorkIsKeptWhenItIsReplacedUnasked) {
    const fs::path kept = harness.folder / "Autosave-previous.mossbit";
    const fs::path other = harness.store("other.mossbit", song().note(50, 0, 1));
    for (const bool opens : {false, true}) {
        model = harness.start(tune);
        fs::remove(kept);
        opens ? model->openHandedOver(other) : model->newProject();
        EXPECT_EQ(saved(kept), tune);
    }

    // Opening what was kept must not replace it by what is open.
    model = harness.start(saved(other));
    model->open(kept);
    EXPECT_EQ(saved(kept), tune);
    EXPECT_EQ(saved(harness.folder / "Autosave-previous-2.mossbit"), saved(other));

    // What its own file did not take.
    const fs::path stick = harness.folder / "stick";
    const auto editWhatIsGone = [&] {
        fs::create_directory(stick);
        model->open(harness.store("stick/song.mossbit", tune));
        fs::remove_all(stick);
        model->setTempo(91);
    };
    editWhatIsGone();
    harness.pass(1);
    model->newProject();
    EXPECT_EQ(saved(kept).tempo, 91);

    // A song that is in its own file and an empty one leave nothing to keep.
    editWhatIsGone();
    harness.dialogs.saveAnswers = {harness.folder / "safe.mossbit"};
    model->saveAs();
    harness.pass(1);
    fs::remove(kept);
    model->newProject();
    model->newProject();
    EXPECT_FALSE(fs::exists(kept));
    EXPECT_EQ(harness.dialogs.shown, Shown{"save song.mossbit"}) << "and no question";
}

TEST_F(Document, AsksWhereNothingHasWhatAFileDidNotTake) {
    const fs::path file = harness.store("song.mossbit", tune);
    model = std::make_unique<ProjectViewModel>(harness.services(), tune, std::nullopt);
    model->open(file);
    harness.files.failure = EROFS;
    model->setTempo(91);
    harness.pass(1);
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_FALSE(model->confirmDiscardIfNeeded());
    EXPECT_EQ(harness.dialogs.shown.size(), 1U);
    harness.files.failure = 0;
    model->flushAutosave();
    EXPECT_TRUE(model->confirmDiscardIfNeeded());
}

TEST_F(Document, OpeningReplacesEverythingOrNothing) {
    const fs::path file = harness.store("song.mossbit", tune);
    model->setSelectedChannelIndex(3);
    model->addNote(1, 0);
    model->play();
    harness.takeHeard();
    model->open(file);
    EXPECT_EQ(model->project(), tune);
    EXPECT_EQ(model->selectedChannelIndex(), 3);
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(harness.takeHeard().size(), 7U) << "each field that changed";

    model->addNote(2, 4);
    model->play();
    const Project before = model->project();
    putBytes(harness.folder / "wrong.mossbit", R"({"bars": "four"})");
    for (const char* name : {"missing.mossbit", "wrong.mossbit", "."}) {
        model->open(harness.folder / name);
        ASSERT_TRUE(model->alertMessage()) << name;
        EXPECT_TRUE(model->alertMessage()->starts_with("Could not open that project: ")) << name;
        model->clearAlertMessage();
    }
    EXPECT_EQ(model->project(), before);
    EXPECT_EQ(model->documentName(), "song");
    EXPECT_TRUE(model->canUndo() && model->hasUnsavedChanges() && model->isPlaying());
}

TEST_F(Document, AFailedSaveIsReportedAndLeavesEverythingAsItWas) {
    const fs::path file = openAndEdit();
    for (const int error : {ENOSPC, EROFS}) {
        harness.files.failure = error;
        harness.dialogs.saveAnswers = {harness.folder / "new.mossbit"};
        error == ENOSPC ? model->save() : model->saveAs();
        EXPECT_EQ(model->alertMessage(), std::string("Could not save: ") + std::strerror(error));
        EXPECT_EQ(model->fileURL(), file);
        EXPECT_TRUE(model->hasUnsavedChanges());
    }
}

TEST_F(Document, ExportsTheSongOnceAndLeavesTheDocumentAlone) {
    model->exportWAV();
    EXPECT_EQ(model->alertMessage(), "Add a few notes before exporting.");
    model = harness.start(song({.tempo = 300, .bars = 1}).note(60, 0, 1));
    model->play();
    harness.takeHeard();
    harness.dialogs.saveAnswers = {harness.folder / "song", harness.folder / "song"};
    model->exportWAV();
    // 16 ticks of 2205 frames of 4 bytes, behind 44 bytes of header.
    EXPECT_EQ(fs::file_size(harness.folder / "song.wav"), 44 + 16 * 2205 * 4U);
    EXPECT_TRUE(harness.takeHeard().empty());
    EXPECT_TRUE(model->isPlaying() && model->project().loop);

    harness.files.failure = ENOSPC;
    model->exportWAV();
    EXPECT_EQ(model->alertMessage(), std::string("Export failed: ") + std::strerror(ENOSPC));
}

TEST_F(Document, AFileHandedOverDuringADialogWaitsForItsAnswer) {
    const fs::path other = harness.store("other.mossbit", song({.tempo = 200}));
    model = harness.start(tune);
    harness.dialogs.saveAnswers = {harness.folder / "mine.mossbit"};
    harness.dialogs.meanwhile = [&] { model->openHandedOver(other), harness.pass(0.1); };
    model->saveAs();
    EXPECT_EQ(saved(harness.folder / "mine.mossbit"), tune);
    harness.pass(0.1);
    EXPECT_EQ(model->fileURL(), other);
    EXPECT_EQ(model->project().tempo, 200);
}

TEST_F(Document, WhatIsDiscardedAtTheEndStaysDiscarded) {
    const fs::path file = openAndEdit();
    harness.dialogs.alertAnswers = {discardButton};
    EXPECT_TRUE(model->confirmDiscardIfNeeded());
    model->flushAutosave();
    EXPECT_EQ(saved(file), tune);
}

} // namespace
} // namespace mossbit
