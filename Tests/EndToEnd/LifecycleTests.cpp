#include "Tests/Support/ScratchHome.h"
#include "Tests/Support/SongBuilder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

// The real program without a screen, started and ended as a desktop does.
namespace mossbit {
namespace {

class Lifecycle : public testing::Test {
protected:
    Lifecycle() { setenv("QT_QPA_PLATFORM", "offscreen", 1); }

    /// Starts the first copy, which has its name on the bus and the autosave on return.
    std::unique_ptr<Process> startFirst(const std::vector<std::string>& arguments = {}) {
        auto program = home.start(arguments);
        EXPECT_TRUE(isUp(*program) && waitUntil([&] {
                        return std::filesystem::exists(home / "Mossbit/Autosave.lock");
                    }));
        return program;
    }

    /// Whether the program is far enough to end in good order.
    static bool isUp(Process& program) {
        const auto handlesTheEnd = [&] {
            const std::string status = bytesOf("/proc/" + std::to_string(program.id()) + "/status");
            const std::size_t caught = status.find("SigCgt:") + 7;
            return (std::stoull(status.substr(caught), nullptr, 16) >> (SIGTERM - 1) & 1) != 0;
        };
        return waitUntil([&] { return !program.isRunning() || handlesTheEnd(); }) &&
               program.isRunning();
    }

    /// Ends a program as the desktop does; false if it did not end in good order.
    static bool end(Process& program, int signal = SIGTERM) {
        const bool up = isUp(program);
        program.kill(signal);
        return up && program.wait() == 0;
    }

    ScratchHome home;
    const Project one = song({.tempo = 111}).note(60, 0, 4);
    const Project two = song({.tempo = 222}).note(61, 0, 4);
};

TEST_F(Lifecycle, SavesWhateverEndsItAndComesBackWithIt) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        std::filesystem::remove_all(home / "Mossbit");
        home.store("one.mossbit", one);
        ASSERT_TRUE(end(*home.start({"one.mossbit"}), signal)) << signal;
        EXPECT_EQ(home.autosave(), one) << signal;
    }
    ASSERT_TRUE(end(*home.start()));
    EXPECT_EQ(home.autosave(), one);
}

TEST_F(Lifecycle, SecondStartHandsItsFileOver) {
    home.startBus();
    home.store("one.mossbit", one);
    const std::filesystem::path file = home.store("zwei #2 ä.mossbit", two);
    // Also a name that is no UTF-8.
    home.store("caf\xe9.mossbit", two);
    const std::string address = "file://" + home.path().string();
    for (const std::string& argument :
         {std::string("zwei #2 ä.mossbit"), file.string(),
          address + "/zwei%20%232%20%C3%A4.mossbit", std::string("caf\xe9.mossbit"),
          address + "/caf%E9.mossbit", std::string("file:caf%E9.mossbit")}) {
        std::filesystem::remove_all(home / "Mossbit");
        const auto first = startFirst({"one.mossbit"});
        // Only once the first one has its name does a second one end by itself.
        EXPECT_EQ(home.start({argument})->wait(), 0);
        EXPECT_EQ(home.start()->wait(), 0);
        ASSERT_TRUE(end(*first));
        EXPECT_EQ(home.autosave(), two) << argument;
    }
}

TEST_F(Lifecycle, AnswersTheDesktop) {
    home.startBus();
    home.store("zwei #2 ä.mossbit", two);
    const auto program = startFirst();
    EXPECT_TRUE(home.call("Activate", {"{'activation-token': <'token'>}"}));
    EXPECT_TRUE(home.call("ActivateAction", {"none", "[<1>]", "{}"}));
    EXPECT_TRUE(home.call("Open", {"@as []", "{}"}));
    const std::string address = "file://" + home.path().string() + "/zwei%20%232%20%C3%A4.mossbit";
    EXPECT_TRUE(home.call("Open", {"['" + address + "', 'file:///missing.mossbit']", "{}"}));
    ASSERT_TRUE(end(*program));
    EXPECT_EQ(home.autosave(), two);
}

TEST_F(Lifecycle, CopiesWithoutABusDoNotFightOverTheAutosave) {
    home.store("one.mossbit", one);
    home.store("two.mossbit", two);
    const auto first = startFirst({"one.mossbit"});
    ASSERT_TRUE(end(*home.start({"two.mossbit"})));
    EXPECT_EQ(home.autosave(), std::nullopt);
    first->kill(SIGKILL);
    ASSERT_TRUE(end(*home.start({"two.mossbit"})));
    EXPECT_EQ(home.autosave(), two);
}

TEST_F(Lifecycle, StartsAloneWhenTheFirstCopyHangsAndSucceedsIt) {
    home.startBus();
    const auto first = startFirst();
    ::kill(first->id(), SIGSTOP);
    const auto second = home.start();
    EXPECT_TRUE(waitUntil([&] { return home.ownersInWaiting() == 2; }));
    first->kill();
    const auto third = home.start();
    ASSERT_TRUE(waitUntil([&] { return !third->isRunning(); })) << "handed over to the second";
    EXPECT_EQ(third->wait(), 0);
    EXPECT_TRUE(end(*second));
}

TEST_F(Lifecycle, OutlivesTheBus) {
    home.startBus();
    home.store("one.mossbit", one);
    const auto program = startFirst({"one.mossbit"});
    home.killBus();
    EXPECT_TRUE(end(*program));
    EXPECT_EQ(home.autosave(), one);
}

TEST_F(Lifecycle, RefusesWhatIsNoProjectAndGoesOn) {
    std::filesystem::create_directory(home / "folder.mossbit");
    putBytes(home / "broken.mossbit", "{");
    putBytes(home / "huge.mossbit", "{");
    std::filesystem::resize_file(home / "huge.mossbit", std::uintmax_t{1} << 30);
    const std::string elsewhere = "file://elsewhere" + home.store("one.mossbit", one).string();
    for (const std::string& file :
         {std::string("folder.mossbit"), std::string("broken.mossbit"), std::string("huge.mossbit"),
          std::string("missing.mossbit"), std::string("http://example.org/a.mossbit"), elsewhere})
        EXPECT_TRUE(end(*home.start({file}))) << file;
    EXPECT_EQ(home.autosave(), Project());
}

} // namespace
} // namespace mossbit
