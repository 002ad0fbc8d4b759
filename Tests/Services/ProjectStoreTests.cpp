#include "Services/ProjectStore.h"

#include "Services/ErrorDescription.h"
#include "Services/ProjectJson.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace mossbit {
namespace {

struct FixedPaths : AppPaths {
    explicit FixedPaths(std::filesystem::path given) : folder(std::move(given)) {}
    std::filesystem::path applicationSupportFolder() const override { return folder; }

    std::filesystem::path folder;
};

std::string readingError(const std::filesystem::path& url) {
    try {
        ProjectStore::read(url);
    } catch (const std::exception& error) {
        return description(error);
    }
    return {};
}

TEST(ProjectStore, ReadsFilesAlsoThroughLinks) {
    const ScratchFolder folder;
    const Project project = song({.tempo = 77}).note(61, 2, 3);
    putBytes(folder / "song.mossbit", ProjectStore::encode(project));
    std::filesystem::create_symlink("song.mossbit", folder / "link");
    EXPECT_EQ(ProjectStore::read(folder / "song.mossbit"), project);
    EXPECT_EQ(ProjectStore::read(folder / "link"), project);
}

TEST(ProjectStore, DescribesWhatCannotBeRead) {
    const ScratchFolder folder;
    putBytes(folder / "empty", "");
    putBytes(folder / "large", "{}");
    std::filesystem::resize_file(folder / "large", (64U << 20) + 1);
    std::filesystem::create_symlink("loop", folder / "loop");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(readingError(folder / "missing"), "No such file or directory");
    EXPECT_EQ(readingError(folder / "empty/song"), "Not a directory");
    EXPECT_EQ(readingError(folder.path()), "Is a directory");
    EXPECT_EQ(readingError(folder / "large"), "File too large");
    EXPECT_EQ(readingError(folder / "loop"), "Too many levels of symbolic links");
    EXPECT_EQ(readingError(folder / "pipe"), "It is not a regular file");
    EXPECT_EQ(readingError("/dev/zero"), "It is not a regular file");
    EXPECT_TRUE(readingError(folder / "empty").starts_with("line 1, column 1: unexpected end"));
}

TEST(ProjectStore, DescribesForbiddenFiles) {
    if (::geteuid() == 0)
        GTEST_SKIP() << "root may read everything";
    const ScratchFolder folder;
    putBytes(folder / "song", "{}");
    std::filesystem::permissions(folder / "song", std::filesystem::perms::none);
    EXPECT_EQ(readingError(folder / "song"), "Permission denied");
}

TEST(ProjectStore, MakesTheAutosaveFolder) {
    const ScratchFolder folder;
    const FixedPaths paths(folder / "deep/inside");
    const auto url = ProjectStore::autosaveURL(paths);
    EXPECT_EQ(url, folder / "deep/inside/Mossbit/Autosave.mossbit");
    EXPECT_TRUE(std::filesystem::is_directory(url.parent_path()));
    EXPECT_EQ(ProjectStore::autosaveURL(paths), url);

    putBytes(folder / "file", "");
    EXPECT_EQ(ProjectStore::autosaveURL(FixedPaths(folder / "file")),
              folder / "file/Mossbit/Autosave.mossbit");
}

TEST(ErrorDescription, GivesTheSystemsWordsAlone) {
    EXPECT_EQ(description(std::system_error(ENOSPC, std::generic_category(), "write")),
              "No space left on device");
    EXPECT_EQ(description(std::filesystem::filesystem_error(
                  "open", std::make_error_code(std::errc::permission_denied))),
              "Permission denied");
    EXPECT_EQ(description(DecodingError("tempo: missing")), "tempo: missing");
    EXPECT_EQ(description(std::bad_alloc()), "Cannot allocate memory");
}

} // namespace
} // namespace mossbit
