#include "Tests/Support/ViewModelHarness.h"

#include <set>

#include <sys/stat.h>

namespace mossbit {
namespace {

namespace fs = std::filesystem;
constexpr std::size_t saveButton = 0, discardButton = 1;

struct Recovery : ViewModelTest {
    const Project tune = song({.tempo = 90}).note(60, 0, 4);
    const Project other = song({.tempo = 200}).note(50, 0, 1);
    const fs::path otherFile = harness.store("other.mossbit", other);
    using Songs = std::vector<Project>;
};

TEST_F(Recovery, KeepsASongThatStandsInNoFileOfTheUsersOwn) {
    for (const bool opens : {false, true}) {
        putBytes(harness.autosave, ProjectStore::encode(tune));
        restart();
        opens ? model->openHandedOver(otherFile) : model->newProject();
        EXPECT_EQ(harness.keptSongs(), Songs{tune}) << "kept twice";
    }
    // What is open now stands in a file.
    model->flushAutosave();
    model->newProject();
    EXPECT_EQ(harness.keptSongs().size(), 1U);
    // A file of Mossbit's own, and one that disappears.
    for (const fs::path& file : {harness.autosave, otherFile}) {
        putBytes(file, ProjectStore::encode(tune));
        model->open(file);
        model->setTempo(file == otherFile ? 91 : 92);
        const Project edited = model->project();
        harness.pass(1);
        fs::remove(otherFile);
        model->newProject();
        EXPECT_EQ(harness.keptSongs().back(), edited);
    }
    EXPECT_TRUE(harness.dialogs.shown.empty());
    // Where it cannot be kept, the user may discard it.
    restart(tune);
    harness.failure = ENOSPC;
    harness.dialogs.alertAnswers = {saveButton, discardButton};
    model->newProject();
    EXPECT_EQ(model->project(), tune);
    model->newProject();
    EXPECT_FALSE(model->project().hasNotes());
}

TEST_F(Recovery, KeepsTheLastFiftySongs) {
    const fs::path kept = harness.autosave.parent_path() / "Kept";
    fs::create_directory(kept);
    // From a clock that went ahead, and a file of the user's own.
    putBytes(kept / "2099-01-01 00-00-00 Untitled.mossbit", ProjectStore::encode(tune));
    putBytes(kept / "2020-my song.mossbit", ProjectStore::encode(other));
    for (int tempo = 100; tempo < 100 + 53; ++tempo) {
        restart(song({.tempo = tempo}).note(60, 0, 1));
        model->newProject();
    }
    restart();
    const Songs songs = harness.keptSongs();
    ASSERT_EQ(songs.size(), 51U);
    EXPECT_EQ(songs.front(), other);
    EXPECT_EQ(songs[1].tempo, 103);
    EXPECT_EQ(songs.back().tempo, 152);
}

TEST_F(Recovery, WritesNothingInPlaceOfWhatItCouldNotReadOrMove) {
    const std::string unreadable = "{\"tempo\": \"fast\"}";
    putBytes(harness.autosave, unreadable);
    harness.failure = EIO;
    restart();
    EXPECT_FALSE(model->project().hasNotes() || model->alertMessage());
    model->addNote(60, 0);
    harness.pass(1);
    EXPECT_FALSE(model->confirmClosing());
    EXPECT_EQ(harness.dialogs.takeShown().size(), 1U);
    EXPECT_EQ(bytesOf(harness.autosave), unreadable);
    harness.failure = 0;
    model->flushAutosave();
    EXPECT_EQ(saved(harness.autosave), model->project());
    ASSERT_EQ(harness.keptFiles().size(), 1);
    const fs::path kept = harness.keptFiles()[0].filesystemFilePath();
    EXPECT_TRUE(kept.string().ends_with(" Autosave.mossbit"));
    EXPECT_EQ(bytesOf(kept), unreadable);

    // The same for what is no file at all.
    fs::remove(harness.autosave);
    ASSERT_EQ(::mkfifo(harness.autosave.c_str(), 0600), 0);
    restart();
    model->flushAutosave();
    EXPECT_TRUE(fs::is_regular_file(harness.autosave));
}

TEST_F(Recovery, AsksAtClosingOnlyWhereNoFileHoldsTheSong) {
    model->open(otherFile);
    model->setTempo(91);
    // No autosave can be written any more.
    fs::remove_all(harness.autosave.parent_path());
    EXPECT_TRUE(model->confirmClosing());
    EXPECT_EQ(saved(otherFile), model->project());

    fs::remove(otherFile);
    fs::create_directory(otherFile);
    EXPECT_FALSE(model->confirmClosing());
    harness.dialogs.alertAnswers = {discardButton};
    EXPECT_TRUE(model->confirmClosing());
    fs::remove(otherFile);
    model->flushAutosave();
    EXPECT_FALSE(fs::exists(otherFile)) << "what was discarded stays so";
}

TEST_F(Recovery, ASecondCopyTakesOverWhenTheFirstHasEnded) {
    restart(tune);
    model->flushAutosave();
    auto second = harness.start();
    EXPECT_FALSE(second->project().hasNotes());
    second->addNote(61, 3);
    harness.pass(1);
    EXPECT_EQ(saved(harness.autosave), tune);
    // A copy that ends without having had the autosave leaves its song among the kept ones.
    second->flushAutosave();
    EXPECT_EQ(harness.keptSongs(), Songs{second->project()});

    model.reset();
    second->addNote(62, 3);
    harness.pass(1);
    EXPECT_EQ(saved(harness.autosave), second->project());
    EXPECT_EQ(harness.keptSongs().back(), tune);
}

TEST_F(Recovery, AutosavesTheFileThatWasOpenAtTheEdit) {
    model->open(otherFile);
    harness.failure = ENOSPC;
    model->setTempo(98);
    harness.pass(0.81);
    EXPECT_FALSE(model->hasUnsavedChanges() || model->alertMessage());
    harness.failure = 0;
    // Also when the document has been saved elsewhere meanwhile.
    model->setTempo(97);
    harness.dialogs.saveAnswers = {harness.folder / "copy.mossbit"};
    model->saveAs();
    harness.pass(0.81);
    EXPECT_EQ(saved(otherFile).tempo, 97);
}

TEST_F(Recovery, AutosavesEveryFiveSecondsAndEverythingAfterThePause) {
    model->open(otherFile);
    std::set<std::int64_t> autosaved;
    for (int change = 0; change < 26; ++change) {
        model->setTempo(100 + change);
        harness.pass(0.4);
        if (fs::exists(harness.autosave))
            autosaved.insert(saved(harness.autosave).tempo);
    }
    // The last changes before 5 and 10.2 seconds.
    EXPECT_EQ(autosaved, (std::set<std::int64_t>{112, 125}));
    fs::remove(harness.autosave);
    harness.pass(0.399);
    EXPECT_FALSE(fs::exists(harness.autosave));
    EXPECT_EQ(saved(otherFile), other);
    harness.pass(0.002);
    EXPECT_EQ(saved(harness.autosave), model->project());
    EXPECT_EQ(saved(otherFile), model->project());
    fs::remove(harness.autosave);
    harness.pass(10);
    EXPECT_FALSE(fs::exists(harness.autosave));
}

/// Every way in which a song gives way to another, with each of its system calls failing, or all
/// from there on: what then lies in the files is what a process leaves that is killed there.
TEST_F(Recovery, LosesNoSongAtAnyFault) {
    const fs::path file = harness.folder / "song.mossbit";
    using Command = std::function<void(ProjectViewModel&)>;
    const Command commands[] = {
        [](auto& vm) { vm.newProject(); },
        [&](auto& vm) {
            vm.open(otherFile);
            if (vm.fileURL())
                vm.setTempo(77), vm.flushAutosave();
        },
        [](auto& vm) { vm.flushAutosave(), vm.newProject(), vm.flushAutosave(); },
        [&](auto& vm) { vm.save(), vm.newProject(), vm.open(otherFile), vm.flushAutosave(); },
        [](auto& vm) { vm.confirmClosing() ? vm.flushAutosave() : vm.newProject(); },
    };
    model.reset();
    for (const Command& command : commands) {
        bool hasFailed = true;
        for (int fault = 0; hasFailed; ++fault) {
            SCOPED_TRACE(std::to_string(&command - commands) + ", " + std::to_string(fault));
            const bool isKilled = fault % 2 == 1;
            fs::remove(file);
            fs::remove_all(harness.autosave.parent_path() / "Kept");
            putBytes(harness.autosave, ProjectStore::encode(tune));
            harness.dialogs.saveAnswers = {file};
            hasFailed = false;
            int calls = 0;
            PosixAtomicFile files(faultyCalls([&](const std::string&) {
                const bool fails = calls++ == fault / 2 || (isKilled && hasFailed);
                hasFailed = hasFailed || fails;
                return fails ? EIO : 0;
            }));
            ProjectViewModel vm({harness.loop, harness.dialogs, files, harness.output, {}},
                                std::nullopt, harness.autosave);
            command(vm);
            Songs songs = harness.keptSongs();
            for (const fs::path& place : {file, harness.autosave})
                if (fs::exists(place))
                    songs.push_back(saved(place));
            EXPECT_TRUE((!isKilled && vm.project() == tune) ||
                        std::ranges::find(songs, tune) != songs.end());
        }
    }
}

} // namespace
} // namespace mossbit
