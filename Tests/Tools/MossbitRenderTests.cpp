#include "Services/ProjectStore.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/wait.h>

namespace mossbit {
namespace {

/// Runs the converter with words for the shell, and returns what it says on standard error.
std::string errors(const ScratchFolder& folder, const std::string& arguments, int expectedStatus,
                   const std::string& before = "") {
    const auto log = folder / "stderr";
    const std::string command = "cd '" + folder.path().string() + "' && " + before +
                                " '" MOSSBIT_RENDER "' " + arguments + " 2>'" + log.string() + "'";
    EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), expectedStatus) << arguments;
    return bytesOf(log);
}

TEST(MossbitRender, WritesASongOrSaysInOneLineWhyNot) {
    const ScratchFolder folder;
    putBytes(folder / "song.mossbit", ProjectStore::encode(song({.bars = 1}).note(60, 0, 4)));
    EXPECT_EQ(errors(folder, "song.mossbit out.wav", 0), "");
    EXPECT_EQ(bytesOf(folder / "out.wav").size(), 352844U);
    EXPECT_EQ(errors(folder, "- piped.wav", 0, "cat song.mossbit |"), "");
    EXPECT_TRUE(bytesOf(folder / "piped.wav") == bytesOf(folder / "out.wav"));

    putBytes(folder / "empty.mossbit", "{}");
    putBytes(folder / "broken.mossbit", "{\"tempo\" : ");
    std::filesystem::create_directory(folder / "folder");
    struct Case {
        std::string arguments, mentions, before = "";
    };
    for (const Case& c :
         {Case{"", "usage"}, Case{"song.mossbit", "usage"},
          Case{"song.mossbit out.wav more", "usage"},
          Case{"'two\nlines' out.wav", "No such file or directory"},
          Case{"empty.mossbit out.wav", "empty.mossbit: There are no notes to export yet."},
          Case{"broken.mossbit out.wav", "line 1"},
          Case{"song.mossbit missing/out.wav", "No such file or directory"},
          Case{"song.mossbit folder", "Is a directory"},
          Case{"song.mossbit ./song.mossbit", "the same file"},
          Case{"song.mossbit out.wav", "out.wav: File too large", "ulimit -f 9 &&"}}) {
        putBytes(folder / "out.wav", "old");
        const std::string line = errors(folder, c.arguments, 1, c.before);
        EXPECT_NE(line.find(c.mentions), std::string::npos) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
        EXPECT_EQ(bytesOf(folder / "out.wav"), "old") << c.arguments;
    }
    EXPECT_EQ(folder.entryCount(), 7) << "a temporary file was left";
}

} // namespace
} // namespace mossbit
