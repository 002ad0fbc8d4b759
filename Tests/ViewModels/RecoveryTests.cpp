#include "Tests/Support/ViewModelHarness.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

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

TEST_F(Recovery, KeepsARestoredSongThatGivesWayWithoutAQuestion) {
    for (const bool opens : {false, true}) {
        putBytes(harness.autosave, ProjectStore::encode(tune));
        restart();
        if (opens)
            model->openHandedOver(otherFile);
        else
            model->newProject();
        EXPECT_EQ(harness.keptSongs(), Songs{tune}) << "kept twice";
    }
    // What is open now stands in a file.
    model->flushAutosave();
    model->newProject();
    EXPECT_EQ(harness.keptSongs().size(), 1U);
    EXPECT_TRUE(harness.dialogs.shown.empty());
}

TEST_F(Recovery, KeepsASongWhoseFileIsMossbitsOwnOrGone) {
    for (const bool isOwn : {true, false}) {
        const fs::path file = isOwn ? harness.autosave : harness.store("song.mossbit", tune);
        putBytes(file, ProjectStore::encode(tune));
        model->open(file);
        model->setTempo(isOwn ? 91 : 92);
        const Project edited = model->project();
        harness.pass(1);
        if (!isOwn)
            fs::remove(file);
        model->newProject();
        EXPECT_EQ(harness.keptSongs().back(), edited);
    }
    EXPECT_TRUE(harness.dialogs.shown.empty());
}

TEST_F(Recovery, AsksWhereASongCannotBeKept) {
    putBytes(harness.autosave, ProjectStore::encode(tune));
    restart();
    harness.files.failure = ENOSPC;
    model->newProject();
    model->openHandedOver(otherFile);
    EXPECT_EQ(harness.dialogs.takeShown().size(), 2U);
    EXPECT_EQ(model->project(), tune);
    // An answer that cannot be carried out changes nothing.
    harness.dialogs.alertAnswers = {saveButton, discardButton};
    harness.dialogs.saveAnswers = {harness.folder / "mine.mossbit"};
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
    const auto unreadable = [&] { return bytesOf(harness.autosave) == "{\"tempo\": \"fast\"}"; };
    putBytes(harness.autosave, "{\"tempo\": \"fast\"}");
    harness.files.failure = EIO;
    restart();
    EXPECT_FALSE(model->project().hasNotes() || model->alertMessage());
    model->addNote(60, 0);
    harness.pass(1);
    EXPECT_TRUE(unreadable());
    EXPECT_FALSE(model->confirmClosing());
    EXPECT_EQ(harness.dialogs.takeShown().size(), 1U);
    harness.files.failure = 0;
    model->flushAutosave();
    EXPECT_EQ(saved(harness.autosave), model->project());
    fs::path kept;
    for (const auto& entry : fs::directory_iterator(harness.autosave.parent_path() / "Kept"))
        if (entry.path().extension() == ".mossbit")
            kept = entry.path();
    EXPECT_TRUE(kept.filename().string().ends_with(" Autosave.mossbit"));
    EXPECT_EQ(bytesOf(kept), "{\"tempo\": \"fast\"}");

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

TEST_F(Recovery, AutosavesOnceAfterABurstOfChanges) {
    restart();
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

TEST_F(Recovery, AutosavesTheFileThatWasOpenAtTheEdit) {
    restart();
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

TEST_F(Recovery, AutosavesAtLeastEveryFiveSecondsButNotTheSongsFile) {
    model->open(otherFile);
    for (int change = 0; change < 26; ++change) {
        model->setTempo(100 + change);
        harness.pass(0.4);
    }
    EXPECT_EQ(harness.files.written, (std::vector{harness.autosave, harness.autosave}));
    EXPECT_TRUE(model->hasUnsavedChanges());
    EXPECT_EQ(saved(otherFile), other);
}

/// Lets the disk fail at one of the calls that a command makes, or the process be killed there.
struct Fault {
    /// How the process ended: not with a status that a sanitizer would give it.
    enum Status { lost = 20, inWindow, killed, none };

    int call = 0;
    bool kills = false;
    int calls = 0;

    bool strikes() {
        if (calls++ != call)
            return false;
        if (kills)
            ::_exit(killed);
        errno = EIO;
        return true;
    }

    PosixFileCalls faultyCalls() {
        PosixFileCalls real = PosixFileCalls::real();
        return {
            .open = [=, this](auto... a) { return strikes() ? -1 : real.open(a...); },
            .write = [=, this](auto... a) { return strikes() ? -1 : real.write(a...); },
            .sync = [=, this](auto... a) { return strikes() ? -1 : real.sync(a...); },
            .rename = [=, this](auto... a) { return strikes() ? -1 : real.rename(a...); },
        };
    }
};

/// Every way in which a song gives way to another, with every call of it failing or cut short.
TEST_F(Recovery, LosesNoSongAtAnyFault) {
    const fs::path file = harness.folder / "song.mossbit";
    using Command = std::function<void(ProjectViewModel&)>;
    const Command commands[] = {
        [&](auto& vm) { vm.newProject(); },
        [&](auto& vm) {
            vm.open(otherFile);
            if (vm.fileURL())
                vm.setTempo(77), vm.flushAutosave();
        },
        [&](auto& vm) { vm.flushAutosave(), vm.newProject(), vm.flushAutosave(); },
        [&](auto& vm) { vm.save(), vm.newProject(), vm.open(otherFile), vm.flushAutosave(); },
        [&](auto& vm) { vm.confirmClosing() ? vm.flushAutosave() : vm.newProject(); },
    };
    for (const Command& command : commands) {
        for (const bool kills : {false, true}) {
            int status = 0;
            for (Fault fault{.kills = kills}; WEXITSTATUS(status) != Fault::none; ++fault.call) {
                SCOPED_TRACE(std::to_string(&command - commands) +
                             (kills ? " killed at " : " at ") + std::to_string(fault.call));
                fs::remove(file);
                fs::remove_all(harness.autosave.parent_path() / "Kept");
                putBytes(harness.autosave, ProjectStore::encode(tune));
                model.reset();
                // What the command throws ends the process, not just this test of it.
                const auto run = [&]() noexcept {
                    PosixAtomicFile files(fault.faultyCalls());
                    harness.dialogs.saveAnswers = {file};
                    ProjectViewModel vm({harness.loop, harness.dialogs, files, harness.output, {}},
                                        std::nullopt, harness.autosave);
                    command(vm);
                    const bool isShown = vm.project() == tune;
                    ::_exit(fault.calls <= fault.call ? Fault::none
                            : isShown                 ? Fault::inWindow
                                                      : Fault::lost);
                };
                const pid_t child = ::fork();
                if (child == 0)
                    run();
                ASSERT_EQ(::waitpid(child, &status, 0), child);
                ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) >= Fault::lost);
                Songs songs = harness.keptSongs();
                for (const fs::path& place : {file, harness.autosave})
                    if (fs::exists(place))
                        songs.push_back(saved(place));
                EXPECT_TRUE(WEXITSTATUS(status) == Fault::inWindow ||
                            std::ranges::find(songs, tune) != songs.end());
            }
        }
    }
}

} // namespace
} // namespace mossbit
