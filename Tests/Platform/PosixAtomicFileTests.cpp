#include "Tests/Support/Fakes.h"
#include "Tests/Support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>
#ifndef __APPLE__
#include <sys/xattr.h>
#endif

namespace mossbit {
namespace {

namespace fs = std::filesystem;

/// The error number of a failed write, 0 where it succeeds.
int writeError(PosixAtomicFile& files, const fs::path& path, std::string_view bytes = "new") {
    try {
        files.write(path, bytes);
    } catch (const std::system_error& error) {
        return error.code().value();
    }
    return 0;
}

TEST(PosixAtomicFile, KeepsPermissionsAndGivesNewFilesTheUsualOnes) {
    const ScratchFolder folder;
    const mode_t before = ::umask(027);
    PosixAtomicFile().write(folder / "new", "one");
    ::umask(before);
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms(0640));
    PosixFileCalls calls = PosixFileCalls::real();
    calls.open = [](const char* path, int flags, mode_t mode) {
        EXPECT_EQ(mode & 0077U, 0U) << "for a moment others could read a private file";
        return ::open(path, flags, mode);
    };
    for (const fs::perms permissions : {fs::perms(0600), fs::perms(0666)}) {
        fs::permissions(folder / "new", permissions);
        PosixAtomicFile(calls).write(folder / "new", "two");
        EXPECT_EQ(fs::status(folder / "new").permissions(), permissions);
    }
    EXPECT_EQ(bytesOf(folder / "new"), "two");
}

TEST(PosixAtomicFile, KeepsTheGroupOrItsPermissionsToItself) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "needs someone who can become somebody else";
    constexpr uid_t owner = 1002;
    constexpr gid_t group = 2000;
    const ScratchFolder folder;
    fs::permissions(folder.path(), fs::perms::all);
    putBytes(folder / "locked", "somebody else's");
    PosixAtomicFile files;
    for (const bool isMember : {true, false}) {
        const fs::path file = folder / (isMember ? "member" : "stranger");
        putBytes(file, "old");
        fs::permissions(file, fs::perms(0660));
        ASSERT_EQ(::chown(file.c_str(), isMember ? 0 : owner, group), 0);
        ASSERT_EQ(::setgroups(isMember ? 1 : 0, &group), 0);
        EXPECT_TRUE(::setegid(owner) == 0 && ::seteuid(owner) == 0);
        EXPECT_EQ(writeError(files, file), 0);
        EXPECT_EQ(writeError(files, folder / "locked"), EACCES);
        ASSERT_TRUE(::seteuid(0) == 0 && ::setegid(0) == 0);
        struct stat now {};
        ::stat(file.c_str(), &now);
        EXPECT_EQ(now.st_gid, isMember ? group : owner);
        EXPECT_EQ(now.st_mode & 0777U, isMember ? 0660U : 0600U);
    }
}

#ifndef __APPLE__
TEST(PosixAtomicFile, KeepsTheAccessControlListAndInheritsNone) {
    // Read and write for the owner and user 1234, nothing for the group and others.
    const std::uint32_t list[] = {2,   0x60001, ~0U, 0x60002, 1234, 0x00004,
                                  ~0U, 0x60010, ~0U, 0x00020, ~0U};
    const char* const name = "system.posix_acl_access";
    const ScratchFolder folder;
    const fs::path shared = folder / "shared", plain = folder / "plain";
    putBytes(shared, "old");
    putBytes(plain, "old");
    fs::permissions(plain, fs::perms(0640));
    if (::setxattr(shared.c_str(), name, list, sizeof list, 0) != 0)
        GTEST_SKIP() << "this file system has no such lists";
    PosixAtomicFile files;
    files.write(shared, "new");
    ::setxattr(folder.path().c_str(), "system.posix_acl_default", list, sizeof list, 0);
    files.write(plain, "new");
    std::uint32_t found[std::size(list)] = {};
    EXPECT_EQ(::getxattr(shared.c_str(), name, found, sizeof found),
              static_cast<ssize_t>(sizeof list));
    EXPECT_TRUE(std::ranges::equal(found, list));
    EXPECT_EQ(::getxattr(plain.c_str(), name, nullptr, 0), -1);
    EXPECT_EQ(fs::status(plain).permissions(), fs::perms(0640));
}
#endif

TEST(PosixAtomicFile, WritesWhatALinkPointsAt) {
    const ScratchFolder folder;
    fs::create_directories(folder / "songs/deep");
    putBytes(folder / "songs/old", "old");
    fs::create_symlink("../old", folder / "songs/deep/up");
    fs::create_symlink("songs/deep/up", folder / "chain");
    fs::create_symlink(folder / "songs/missing", folder / "dangling");
    fs::create_symlink("loop", folder / "loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    PosixAtomicFile files;
    files.write(folder / "chain", "new");
    files.write(folder / "dangling", "made");
    EXPECT_EQ(bytesOf(folder / "songs/old"), "new");
    EXPECT_EQ(bytesOf(folder / "songs/missing"), "made");
    EXPECT_TRUE(fs::is_symlink(folder / "chain") && fs::is_symlink(folder / "songs/deep/up"));
    EXPECT_EQ(writeError(files, folder / "loop"), ELOOP);
    EXPECT_EQ(writeError(files, folder / "pipe"), ENOTSUP);
}

TEST(PosixAtomicFile, KeepsTheOldFileUntilTheNewOneIsOnTheDisk) {
    const ScratchFolder folder;
    const fs::path file = folder / "file";
    putBytes(file, "old");
    std::vector<std::string> made;
    std::size_t failing = 1;
    PosixFileCalls calls = faultyCalls([&](const std::string& call) {
        made.push_back(call);
        return made.size() == failing ? EDQUOT : 0;
    });
    calls.write = [write = calls.write](int descriptor, const void* bytes, std::size_t count) {
        return write(descriptor, bytes, std::min<std::size_t>(count, 3));
    };
    PosixAtomicFile files(calls);
    while (writeError(files, file, "01234") == EDQUOT) {
        EXPECT_EQ(bytesOf(file), "old") << failing;
        EXPECT_EQ(folder.entryCount(), 1) << failing;
        ++failing;
        made.clear();
    }
    using Calls = std::vector<std::string>;
    EXPECT_EQ(made, (Calls{"open", "write", "write", "sync", "rename", "open"}));
    EXPECT_EQ(bytesOf(file), "01234");
    failing = 0;
    made.clear();
    EXPECT_EQ(writeError(files, file, "new"), 0);
    EXPECT_EQ(made, (Calls{"open", "write", "sync", "rename", "open", "sync"}));
}

TEST(PosixAtomicFile, RepeatsInterruptedCallsAndNoticesThatNothingIsWritten) {
    const ScratchFolder folder;
    PosixFileCalls calls = faultyCalls([turn = 0](const std::string& call) mutable {
        return call != "rename" && ++turn % 2 == 1 ? EINTR : 0;
    });
    PosixAtomicFile interrupted(calls);
    EXPECT_EQ(writeError(interrupted, folder / "file"), 0);
    EXPECT_EQ(bytesOf(folder / "file"), "new");
    calls.write = [](auto&&...) { return 0; };
    PosixAtomicFile full(calls);
    EXPECT_EQ(writeError(full, folder / "other"), ENOSPC);
    EXPECT_EQ(folder.entryCount(), 1);
}

TEST(PosixAtomicFile, RemovesTemporariesThatWereLeftAnHourAgo) {
    const ScratchFolder folder;
    const auto old = fs::file_time_type::clock::now() - std::chrono::minutes(61);
    for (const char* name : {".mossbit-0123456789abcdef.tmp", ".mossbit-notes.tmp"}) {
        putBytes(folder / name, "half");
        fs::last_write_time(folder / name, old);
    }
    putBytes(folder / ".mossbit-0000000000000000.tmp", "of another writer");
    PosixAtomicFile().write(folder / "file", "whole");
    EXPECT_FALSE(fs::exists(folder / ".mossbit-0123456789abcdef.tmp"));
    EXPECT_EQ(folder.entryCount(), 3);
}

} // namespace
} // namespace mossbit
