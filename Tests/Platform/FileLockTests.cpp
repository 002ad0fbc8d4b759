#include "Platform/FileLock.h"

#include "Tests/Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <optional>

namespace mossbit {
namespace {

TEST(FileLock, KeepsOthersOutUntilItIsGone) {
    const ScratchFolder folder;
    std::optional<FileLock> first(folder / "lock");
    EXPECT_FALSE(first->isTaken());
    EXPECT_TRUE(FileLock(folder / "lock").isTaken());
    first.reset();
    EXPECT_FALSE(FileLock(folder / "lock").isTaken());
}

TEST(FileLock, IsGivenBackByAKilledProcess) {
    const ScratchFolder folder;
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        const FileLock lock(folder / "lock");
        [[maybe_unused]] const auto written = write(ready[1], "", 1);
        pause();
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_TRUE(FileLock(folder / "lock").isTaken());
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(FileLock(folder / "lock").isTaken());
    close(ready[0]);
    close(ready[1]);
}

TEST(FileLock, IsNobodysWhereItCannotBeMade) {
    const ScratchFolder folder;
    EXPECT_FALSE(FileLock(folder / "missing/lock").isTaken());
}

} // namespace
} // namespace mossbit
