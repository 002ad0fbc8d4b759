#include "Tests/Support/ViewModelHarness.h"

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
    /// The state that was about to be written last, and the last one that certainly was.
    std::atomic<std::int64_t> begun{0};
    std::atomic<std::int64_t> written{0};
};

/// Differs from one state to the next in every note, so that no mixture of two passes for one.
Project state(const Project& base, std::int64_t number) {
    Project project = base;
    project.tempo = 40 + number % 200;
    for (Note& note : project.channels[0].notes)
        note.start = number % 60;
    return project;
}

/// Edits and autosaves until it is killed. Runs in a process of its own.
[[noreturn]] void editForEver(ViewModelHarness& harness, const Project& base, Progress& progress) {
    const auto model = harness.start(base);
    for (std::int64_t number = progress.begun + 1;; ++number) {
        const Project next = state(base, number);
        model->setTempo(next.tempo);
        for (const Note& note : next.channels[0].notes)
            model->updateNote(note.id, {.start = note.start});
        progress.begun = number;
        harness.pass(0.9);
        progress.written = number;
    }
}

TEST(CrashSafety, AKilledProgramLeavesOneOfTheLastTwoStates) {
    constexpr int kills = 220;
    ViewModelHarness harness;
    SongBuilder builder = song();
    for (int pitch = 0; pitch < 240; ++pitch)
        builder.note(36 + pitch % 61, 0, 1);
    const Project base = builder;
    Project last = state(base, 0);
    harness.store("Autosave.mossbit", last);

    void* const shared =
        mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    Progress& progress = *new (shared) Progress;
    std::mt19937 random(7);
    int unfinished = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const std::int64_t before = progress.begun;
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0)
            editForEver(harness, base, progress);
        while (progress.begun <= before)
            usleep(100);
        usleep(std::uniform_int_distribution<useconds_t>(0, 12000)(random));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";

        const std::int64_t written = progress.written, begun = progress.begun;
        unfinished += begun > written;
        if (written > before)
            last = state(base, written);
        const Project found = ProjectStore::read(harness.autosave);
        ASSERT_TRUE(found == last || found == state(base, begun));
        last = found;
    }
    EXPECT_GT(unfinished, kills / 10) << "hardly a kill met a write";
}

} // namespace
} // namespace mossbit
