#include "Services/ProjectStore.h"

#include "Services/ErrorDescription.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace mossbit {
namespace {

std::string readingError(const std::filesystem::path& url) {
    try {
        ProjectStore::read(url);
    } catch (const std::exception& error) {
        return description(error);
    }
    return {};
}

TEST(ProjectStore, DescribesWhatCannotBeRead) {
    const ScratchFolder folder;
    putBytes(folder / "empty", "");
    putBytes(folder / "large", "{}");
    std::filesystem::resize_file(folder / "large", (4U << 20) + 1);
    // Longer once it is written with all its members.
    std::string notes = R"({"channels":[{"kind":"wave","notes":[{"pitch":60,"start":0,"length":1})";
    for (int count = 0; count < 50'000; ++count)
        notes += R"(,{"pitch":60,"start":0,"length":1})";
    putBytes(folder / "short", notes + "]}]}");
    std::filesystem::create_symlink("loop", folder / "loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readingError(folder / "missing"), "No such file or directory");
    EXPECT_EQ(readingError(folder / "empty/song"), "Not a directory");
    EXPECT_EQ(readingError(folder.path()), "Is a directory");
    EXPECT_EQ(readingError(folder / "large"), "File too large");
    EXPECT_EQ(readingError(folder / "short"), "File too large");
    EXPECT_EQ(readingError(folder / "loop"), "Too many levels of symbolic links");
    EXPECT_EQ(readingError(folder / "pipe"), "It is not a regular file");
    EXPECT_EQ(readingError("/dev/zero"), "It is not a regular file");
    EXPECT_TRUE(readingError(folder / "empty").starts_with("line 1, column 1: unexpected end"));
}

#ifdef F_SETLEASE
TEST(ProjectStore, WaitsForAnotherProcessToGiveUpItsLease) {
    const ScratchFolder folder;
    putBytes(folder / "song", "{}");
    const pid_t holder = ::fork();
    if (holder == 0) {
        if (::fcntl(::open((folder / "song").c_str(), O_RDWR), F_SETLEASE, F_WRLCK) == 0)
            putBytes(folder / "held", "");
        ::pause(); // Until the system asks for the lease, by a signal that ends the process.
    }
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(folder / "held"); }));
    EXPECT_EQ(readingError(folder / "song"), "");
    ::kill(holder, SIGKILL);
    ::waitpid(holder, nullptr, 0);
}
#endif

} // namespace
} // namespace mossbit
