#include "Tests/Support/FullSong.h"
#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mossbit {
namespace {

/// Told by the child, read by the parent after the child's death.
struct Progress {
    /// The state that was about to be written last, and the last one that certainly was, to both
    /// files.
    std::atomic<std::int64_t> begun{0};
    std::atomic<std::int64_t> written{0};
};

/// Differs from one state to the next in every note, so that no mixture of two passes for one.
Project state(const Project& base, std::int64_t number) {
    Project project = base;
    project.tempo = 40 + number % 200;
    for (Channel& channel : project.channels)
        for (Note& note : channel.notes)
            note.start = number % 200;
    return project;
}

/// Edits and autosaves until it is killed. Runs in a process of its own.
[[noreturn]] void editForEver(ViewModelHarness& harness, const Project& base,
                              const std::filesystem::path& file, Progress& progress) {
    const auto model = harness.start(Project());
    model->open(file);
    for (std::int64_t number = progress.begun + 1;; ++number) {
        const Project next = state(base, number);
        model->setTempo(next.tempo);
        for (const ChannelKind kind : allChannelKinds) {
            const auto index = static_cast<std::size_t>(kind);
            model->setSelectedChannelIndex(static_cast<int>(index));
            for (const Note& note : next.channels[index].notes)
                model->updateNote(note.id, {.start = note.start});
        }
        progress.begun = number;
        harness.pass(0.9);
        progress.written = number;
    }
}

TEST(CrashSafety, AKilledProgramLeavesOneOfTheLastTwoStates) {
    constexpr int kills = 220;
    ViewModelHarness harness;
    Project base = fullSong();
    for (Channel& channel : base.channels)
        channel.notes.resize(64);
    const auto file = harness.store("song.mossbit", state(base, 0));
    harness.store("Autosave.mossbit", state(base, 0));

    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Progress& progress = *new (shared) Progress;
    std::mt19937 random(7);
    int unfinished = 0;
    std::map<std::filesystem::path, Project> last = {{harness.autosave, state(base, 0)},
                                                     {file, state(base, 0)}};
    for (int kill = 0; kill < kills; ++kill) {
        const std::int64_t before = progress.begun;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            editForEver(harness, base, file, progress);
        while (progress.begun <= before)
            usleep(100);
        usleep(std::uniform_int_distribution<useconds_t>(0, 12000)(random));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";

        const std::int64_t written = progress.written, begun = progress.begun;
        unfinished += begun > written;
        for (auto& [path, project] : last) {
            if (written > before)
                project = state(base, written);
            const Project found = ProjectStore::read(path);
            ASSERT_TRUE(found == project || found == state(base, begun)) << path;
            project = found;
        }
    }
    EXPECT_GT(unfinished, kills / 10) << "hardly a kill met a write";

    // The next start sweeps up after them all.
    const auto model = harness.start();
    EXPECT_EQ(harness.folder.entryCount(), 2);
}

} // namespace
} // namespace mossbit
