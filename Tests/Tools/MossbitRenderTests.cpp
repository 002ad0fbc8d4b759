#include "Services/ProjectStore.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sys/wait.h>

namespace mossbit {
namespace {

struct Outcome {
    int status;
    std::string errors;
};

/// Runs the converter; `arguments` are words for the shell, as is what comes `before` them all.
Outcome run(const ScratchFolder& folder, const std::string& arguments,
            const std::string& before = "") {
    const auto log = folder / "stderr";
    const std::string command = "cd '" + folder.path().string() + "' && " + before +
                                " '" MOSSBIT_RENDER "' " + arguments + " 2>'" + log.string() + "'";
    const int status = std::system(command.c_str());
    return {WEXITSTATUS(status), bytesOf(log)};
}

TEST(MossbitRender, WritesASongOrSaysInOneLineWhyNot) {
    const ScratchFolder folder;
    putBytes(folder / "song.mossbit", ProjectStore::encode(song({.bars = 1}).note(60, 0, 4)));
    const Outcome done = run(folder, "song.mossbit out.wav");
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(done.errors, "");
    EXPECT_EQ(bytesOf(folder / "out.wav").size(), 352844U);
    EXPECT_EQ(run(folder, "- piped.wav", "cat song.mossbit |").status, 0);
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
        const Outcome outcome = run(folder, c.arguments, c.before);
        EXPECT_NE(outcome.status, 0) << c.arguments;
        EXPECT_NE(outcome.errors.find(c.mentions), std::string::npos) << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1)
            << outcome.errors;
        EXPECT_EQ(outcome.errors.back(), '\n');
        EXPECT_EQ(bytesOf(folder / "out.wav"), "old") << c.arguments;
    }
    EXPECT_EQ(folder.entryCount(), 7) << "a temporary file was left";
}

} // namespace
} // namespace mossbit
