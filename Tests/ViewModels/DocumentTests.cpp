#include "Tests/Support/ViewModelHarness.h"

namespace mossbit {
namespace {

namespace fs = std::filesystem;
using Shown = std::vector<std::string>;
constexpr std::size_t saveButton = 0, discardButton = 1, cancelButton = 2;

struct Document : ViewModelTest {
    const Project tune = song({.tempo = 90}).note(60, 0, 4);
};

TEST_F(Document, IsNamedAfterItsFile) {
    using Case = std::array<std::string, 2>;
    for (const auto& [file, name] : {Case{"new.mossbit", "new"}, Case{"my.song.json", "my.song"},
                                     Case{"f\u00fcr Elise.mossbit", "f\u00fcr Elise"}}) {
        restart(tune);
        const fs::path exported = harness.folder / (name + ".wav");
        harness.dialogs.saveAnswers = {harness.folder / file, exported};
        model->save();
        EXPECT_EQ(model->fileURL(), harness.folder / file);
        EXPECT_EQ(model->documentName(), name);
        EXPECT_EQ(saved(harness.folder / file), tune);
        model->exportWAV();
        // 64 ticks of 7350 frames of 4 bytes, behind 44 bytes of header.
        EXPECT_EQ(fs::file_size(exported), 44 + 64 * 7350 * 4U);
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
            harness.failure = 0;
            const fs::path file = harness.store("song.mossbit", tune);
            restart(tune);
            if (c.hasFile)
                model->open(file);
            model->setTempo(91);
            const Project edited = model->project();
            harness.dialogs.alertAnswers = {c.button};
            harness.dialogs.openAnswers = {other};
            harness.dialogs.saveAnswers = {c.goesOn ? std::optional(file) : std::nullopt};
            // What comes due meanwhile is kept safe, but must not reach the song's file.
            harness.dialogs.meanwhile = [&] {
                harness.pass(9);
                EXPECT_EQ(saved(harness.autosave), edited);
                EXPECT_EQ(saved(file), tune);
                harness.failure = c.writeFails ? EIO : 0;
            };
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

TEST_F(Document, OpeningReplacesEverythingOrNothing) {
    const fs::path file = harness.store("song.mossbit", tune);
    model->setSelectedChannelIndex(3);
    model->addNote(1, 0);
    model->play();
    using Model = ProjectViewModel;
    int told = 0;
    for (const auto change :
         {&Model::projectChanged, &Model::selectionChanged, &Model::isPlayingChanged,
          &Model::fileURLChanged, &Model::hasUnsavedChangesChanged, &Model::historyChanged,
          &Model::documentReplaced})
        QObject::connect(model.get(), change, [&] { ++told; });
    model->open(file);
    EXPECT_EQ(model->project(), tune);
    EXPECT_EQ(model->selectedChannelIndex(), 3);
    EXPECT_FALSE(model->isPlaying());
    EXPECT_EQ(told, 7);

    model->addNote(2, 4);
    model->play();
    const Project before = model->project();
    model->open(harness.folder.path());
    EXPECT_TRUE(model->alertMessage());
    model->clearAlertMessage();
    model->openHandedOver(harness.folder / "gone.mossbit");
    EXPECT_EQ(model->alertMessage(),
              "Could not open that project: gone.mossbit: No such file or directory");
    EXPECT_TRUE(harness.dialogs.shown.empty());
    EXPECT_EQ(model->project(), before);
    EXPECT_EQ(model->documentName(), "song");
    EXPECT_TRUE(model->canUndo() && model->hasUnsavedChanges() && model->isPlaying());
}

TEST_F(Document, AFailedWriteIsReportedAndLeavesEverythingAsItWas) {
    model->exportWAV();
    EXPECT_EQ(model->alertMessage(), "Add a few notes before exporting.");
    const fs::path file = harness.store("song.mossbit", tune);
    model->open(file);
    model->setTempo(91);
    using Model = ProjectViewModel;
    const std::tuple<void (Model::*)(), int, const char*> cases[] = {
        {&Model::save, ENOSPC, "Could not save: song.mossbit: No space left on device"},
        {&Model::saveAs, EROFS,
         "Could not save: new.mossbit: Read-only file system. It is read-only; "
         "Save As… writes to another place."},
        {&Model::exportWAV, ENOSPC, "Export failed: new.mossbit: No space left on device"},
    };
    for (const auto& [command, error, message] : cases) {
        harness.failure = error;
        harness.dialogs.saveAnswers = {harness.folder / "new.mossbit"};
        (*model.*command)();
        EXPECT_EQ(model->alertMessage(), message);
        EXPECT_EQ(model->fileURL(), file);
        EXPECT_TRUE(model->hasUnsavedChanges());
    }
}

TEST_F(Document, AFileHandedOverDuringADialogWaitsForItsAnswer) {
    const fs::path other = harness.store("other.mossbit", song({.tempo = 200}));
    restart(tune);
    harness.dialogs.saveAnswers = {harness.folder / "mine.mossbit"};
    harness.dialogs.meanwhile = [&] { model->openHandedOver(other), harness.pass(0.1); };
    model->saveAs();
    EXPECT_EQ(saved(harness.folder / "mine.mossbit"), tune);
    harness.pass(0.1);
    EXPECT_EQ(model->fileURL(), other);
    EXPECT_EQ(model->project().tempo, 200);
}

} // namespace
} // namespace mossbit
