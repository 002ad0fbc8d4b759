#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <cstring>

namespace mossbit {
namespace {

namespace fs = std::filesystem;
using Shown = std::vector<std::string>;
constexpr std::size_t saveButton = 0, discardButton = 1, cancelButton = 2;

struct Document : testing::Test {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> model = harness.start(Project());
    const Project tune = song({.tempo = 90}).note(60, 0, 4);

    Project saved(const fs::path& path) { return ProjectStore::read(path); }
};

TEST_F(Document, StartsWithWhatTheAutosaveHolds) {
    const fs::path kept = harness.folder / "Autosave-unreadable.mossbit";
    harness.store("Autosave.mossbit", tune);
    model = harness.start();
    EXPECT_EQ(model->project(), tune);
    EXPECT_EQ(model->documentName(), "Untitled");
    EXPECT_FALSE(model->hasUnsavedChanges() || model->canUndo() || model->alertMessage());

    for (const std::string broken : {"", "{\"bars\": 4", "{\"tempo\": \"fast\"}"}) {
        putBytes(harness.folder / "Autosave.mossbit", broken);
        model = harness.start();
        EXPECT_FALSE(model->project().hasNotes() || model->alertMessage());
        model->flushAutosave();
        EXPECT_EQ(bytesOf(kept), broken);
        EXPECT_EQ(saved(harness.autosave), model->project());
    }
}

TEST_F(Document, IsNamedAfterItsFileAndSavedWithAnExtension) {
    struct Case {
        const char *chosen, *written, *name;
    };
    for (const Case& c : {Case{"Song.mossbit", "Song.mossbit", "Song"},
                          {"new", "new.mossbit", "new"},
                          {"my.song.mossbit", "my.song.mossbit", "my.song"},
                          {"data.json", "data.json", "data"},
                          {"Song v1.2", "Song v1.2.mossbit", "Song v1.2"},
                          {"f\u00fcr Elise", "f\u00fcr Elise.mossbit", "f\u00fcr Elise"}}) {
        model = harness.start(tune);
        harness.dialogs.saveAnswers = {harness.folder / c.chosen, harness.folder / c.chosen};
        model->save();
        EXPECT_EQ(model->fileURL(), harness.folder / c.written);
        EXPECT_EQ(model->documentName(), c.name);
        EXPECT_EQ(saved(harness.folder / c.written), tune);
        model->exportWAV();
        model->saveAs();
        EXPECT_EQ(harness.dialogs.takeShown(),
                  (Shown{"save Untitled.mossbit", "save wav " + std::string(c.name) + ".wav",
                         "save " + std::string(c.name) + ".mossbit"}));
    }
}

TEST_F(Document, AsksAboutUnsavedWorkBeforeReplacingIt) {
    const struct {
        const char* name;
        bool hasFile;
        std::size_t button;
        bool panelAnswered, writeFails, goesOn, isSaved;
    } cases[] = {
        {"save to file", true, saveButton, false, false, true, true},
        {"save untitled", false, saveButton, true, false, true, true},
        {"panel cancelled", false, saveButton, false, false, false, false},
        {"write fails", true, saveButton, false, true, false, false},
        {"discard", true, discardButton, false, false, true, false},
        {"discard untitled", false, discardButton, false, false, true, false},
        {"cancel", true, cancelButton, false, false, false, false},
    };
    const fs::path other = harness.store("other.mossbit", song({.tempo = 200}).note(50, 0, 1));
    for (const auto& c : cases) {
        for (const std::string command : {"new", "open", "hand over"}) {
            SCOPED_TRACE(c.name + (", " + command));
            harness.files.failure = 0;
            const fs::path file = harness.store("song.mossbit", tune);
            model = harness.start(tune);
            if (c.hasFile)
                model->open(file);
            model->setTempo(91);
            const Project edited = model->project();
            harness.dialogs.alertAnswers = {c.button};
            harness.dialogs.openAnswers = {other};
            harness.dialogs.saveAnswers = {c.panelAnswered ? std::optional(file) : std::nullopt};
            harness.files.failure = c.writeFails ? EIO : 0;
            if (command == "new")
                model->newProject();
            else if (command == "open")
                model->open();
            else
                model->openHandedOver(other);

            const Shown shown = harness.dialogs.takeShown();
            ASSERT_FALSE(shown.empty());
            EXPECT_EQ(shown[0], c.hasFile ? "alert Save changes to song?"
                                          : "alert Save changes to Untitled?");
            EXPECT_EQ(std::ranges::count(shown, "open"), c.goesOn && command == "open");
            EXPECT_TRUE(model->hasUnsavedChanges() != c.goesOn && model->canUndo() != c.goesOn);
            EXPECT_EQ(model->alertMessage().has_value(), c.writeFails);
            const Project replacement = command == "new" ? Project() : saved(other);
            EXPECT_EQ(model->project(), c.goesOn ? replacement : edited);
            // What was discarded stays so: its pending autosave went with it.
            if (c.goesOn)
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
    harness.store("Autosave.mossbit", tune);
    const fs::path other = harness.store("other.mossbit", song({}).note(50, 0, 1));
    for (const bool opens : {false, true}) {
        model = harness.start(tune);
        fs::remove(kept);
        opens ? model->openHandedOver(other) : model->newProject();
        EXPECT_EQ(saved(kept), tune);
    }

    // Opening what was kept must not replace it by what is open.
    model = harness.start(song({}).note(40, 0, 1));
    model->open(kept);
    EXPECT_EQ(saved(kept), tune);
    EXPECT_EQ(saved(harness.folder / "Autosave-previous-2.mossbit").channels[0].notes[0].pitch, 40);

    // A song with a file of its own and an empty one leave nothing to keep.
    fs::remove(kept);
    model->newProject();
    model->newProject();
    EXPECT_FALSE(fs::exists(kept));
    EXPECT_TRUE(harness.dialogs.shown.empty());
}

TEST_F(Document, OpeningReplacesEverythingOrNothing) {
    putBytes(harness.folder / "two.mossbit",
             R"({"channels": [{"kind": "noise"}, {"kind": "wave", "volume": 3}]})");
    model->setSelectedChannelIndex(3);
    model->addNote(1, 0);
    harness.takeHeard();
    model->open(harness.folder / "two.mossbit");
    EXPECT_EQ(model->project().channels.size(), 4U);
    EXPECT_EQ(model->project().channels[2].volume, 3);
    EXPECT_EQ(model->selectedChannelIndex(), 3);
    EXPECT_EQ(harness.takeHeard().size(), 6U) << "each field that changed";

    model->addNote(2, 4);
    const Project before = model->project();
    putBytes(harness.folder / "notes.txt", "la la la");
    putBytes(harness.folder / "wrong.mossbit", R"({"bars": "four"})");
    for (const char* name : {"missing.mossbit", "notes.txt", "wrong.mossbit", "."}) {
        model->open(harness.folder / name);
        ASSERT_TRUE(model->alertMessage()) << name;
        EXPECT_TRUE(model->alertMessage()->starts_with("Could not open that project: ")) << name;
        model->clearAlertMessage();
    }
    EXPECT_EQ(model->project(), before);
    EXPECT_EQ(model->documentName(), "two");
    EXPECT_TRUE(model->canUndo() && model->hasUnsavedChanges());
}

TEST_F(Document, AFailedSaveIsReportedAndLeavesEverythingAsItWas) {
    const fs::path file = harness.store("song.mossbit", tune);
    model->open(file);
    model->setTempo(91);
    fs::create_directory(harness.folder / "folder.mossbit");
    for (const auto& [error, target] : std::initializer_list<std::pair<int, fs::path>>{
             {ENOSPC, file},
             {EROFS, harness.folder / "new.mossbit"},
             {ENOENT, harness.folder / "no/such.mossbit"},
             {EISDIR, harness.folder / "folder.mossbit"}}) {
        harness.files.failure = error == ENOSPC || error == EROFS ? error : 0;
        harness.dialogs.saveAnswers = {target};
        target == file ? model->save() : model->saveAs();
        EXPECT_EQ(model->alertMessage(), std::string("Could not save: ") + std::strerror(error));
        EXPECT_EQ(model->fileURL(), file);
        EXPECT_TRUE(model->hasUnsavedChanges());
        EXPECT_EQ(saved(file), tune);
        EXPECT_EQ(harness.folder.entryCount(), 2);
    }
}

TEST_F(Document, ExportsTheSongOnceAndLeavesTheDocumentAlone) {
    model->exportWAV();
    EXPECT_EQ(model->alertMessage(), "Add a few notes before exporting.");
    model = harness.start(song({.tempo = 300, .bars = 1, .loop = true}).muted().note(60, 0, 1));
    model->play();
    harness.takeHeard();
    model->exportWAV();
    harness.dialogs.saveAnswers = {harness.folder / "song"};
    model->exportWAV();
    EXPECT_EQ(harness.dialogs.takeShown(), Shown(2, "save wav Untitled.wav"));
    // 16 ticks of 2205 frames of 4 bytes, behind 44 bytes of header.
    EXPECT_EQ(fs::file_size(harness.folder / "song.wav"), 44 + 16 * 2205 * 4U);
    EXPECT_TRUE(harness.takeHeard().empty());
    EXPECT_TRUE(model->isPlaying() && model->project().loop);

    harness.files.failure = ENOSPC;
    harness.dialogs.saveAnswers = {harness.folder / "song"};
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

TEST_F(Document, SavesNothingWhileItAsksWhetherToDiscard) {
    const fs::path file = harness.store("song.mossbit", tune);
    for (const bool opens : {true, false}) {
        model->open(file);
        model->setTempo(91);
        harness.dialogs.meanwhile = [&] { harness.pass(2); };
        harness.dialogs.alertAnswers = {discardButton};
        if (opens)
            model->newProject();
        else
            model->open(); // Its panel is cancelled, so the work stays and is saved after all.
        EXPECT_EQ(saved(file), tune);
        harness.pass(2);
        EXPECT_EQ(saved(file).tempo, opens ? 90 : 91);
    }
}

TEST_F(Document, WhatIsDiscardedAtTheEndStaysDiscarded) {
    const fs::path file = harness.store("song.mossbit", tune);
    model->open(file);
    model->setTempo(91);
    harness.dialogs.alertAnswers = {discardButton};
    EXPECT_TRUE(model->confirmDiscardIfNeeded());
    model->flushAutosave();
    EXPECT_EQ(saved(file), tune);
}

} // namespace
} // namespace mossbit
