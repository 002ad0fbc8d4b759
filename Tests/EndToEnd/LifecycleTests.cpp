#include "Services/ProjectStore.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

// The real program without a screen, started and ended as a desktop does.
namespace mossbit {
namespace {

class Lifecycle : public testing::Test {
protected:
    void SetUp() override {
        for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            setenv(variable, home.path().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (home / "bus").string()).c_str(), 1);
        std::filesystem::current_path(home.path());
    }

    void TearDown() override { std::filesystem::current_path("/"); }

    void startBus() {
        bus.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                             std::string("--address=unix:path=") +
                                                 (home / "bus").string()});
        ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(home / "bus"); }));
    }

    std::filesystem::path store(const char* name, const Project& project) {
        putBytes(home / name, ProjectStore::encode(project));
        return home / name;
    }

    /// Starts the first copy, which has its name on the bus and the autosave on return.
    std::unique_ptr<Process> startFirst(const std::vector<std::string>& arguments = {}) {
        auto program = start(arguments);
        EXPECT_TRUE(isUp(*program) && waitUntil([&] {
                        return std::filesystem::exists(home / "Mossbit/Autosave.lock");
                    }));
        return program;
    }

    std::unique_ptr<Process> start(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command = {MOSSBIT_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return std::make_unique<Process>(command);
    }

    /// Whether the program is far enough to end in good order.
    static bool isUp(Process& program) {
        return waitUntil([&] {
                   std::ifstream status("/proc/" + std::to_string(program.id()) + "/status");
                   std::string word;
                   while (status >> word) {
                       if (word == "SigCgt:" && status >> word)
                           return (std::stoull(word, nullptr, 16) >> (SIGTERM - 1) & 1) != 0;
                   }
                   return !program.isRunning();
               }) &&
               program.isRunning();
    }

    /// Ends a program as the desktop does; false if it did not end in good order.
    static bool end(Process& program, int signal = SIGTERM) {
        const bool up = isUp(program);
        program.kill(signal);
        return up && program.wait() == 0;
    }

    std::optional<Project> autosave() const {
        const auto file = home / "Mossbit/Autosave.mossbit";
        if (!std::filesystem::exists(file))
            return std::nullopt;
        return ProjectStore::read(file);
    }

    const ScratchFolder home;
    std::optional<Process> bus;
    const Project one = song({.tempo = 111}).note(60, 0, 4);
    const Project two = song({.tempo = 222}).note(61, 0, 4);
};

TEST_F(Lifecycle, SavesWhateverEndsItAndComesBackWithIt) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        std::filesystem::remove_all(home / "Mossbit");
        store("one.mossbit", one);
        ASSERT_TRUE(end(*start({"one.mossbit"}), signal)) << signal;
        EXPECT_EQ(autosave(), one) << signal;
    }
    ASSERT_TRUE(end(*start()));
    EXPECT_EQ(autosave(), one);
}

TEST_F(Lifecycle, SecondStartHandsItsFileOver) {
    startBus();
    store("one.mossbit", one);
    const std::filesystem::path file = store("zwei #2 ä.mossbit", two);
    for (const std::string& argument :
         {std::string("zwei #2 ä.mossbit"), file.string(),
          "file://" + home.path().string() + "/zwei%20%232%20%C3%A4.mossbit"}) {
        std::filesystem::remove_all(home / "Mossbit");
        const auto first = startFirst({"one.mossbit"});
        // Only once the first one has its name does a second one end by itself.
        EXPECT_EQ(start({argument})->wait(), 0);
        EXPECT_EQ(start()->wait(), 0);
        ASSERT_TRUE(end(*first));
        EXPECT_EQ(autosave(), two) << argument;
    }
}

TEST_F(Lifecycle, AnswersTheDesktop) {
    startBus();
    store("zwei #2 ä.mossbit", two);
    const auto program = startFirst();
    const auto call = [](const std::string& method, std::vector<std::string> arguments) {
        std::vector<std::string> command = {"gdbus",
                                            "call",
                                            "--session",
                                            "--timeout=5",
                                            "--dest=com.quillark.mossbit",
                                            "--object-path=/com/quillark/mossbit",
                                            "--method=org.freedesktop.Application." + method};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return Process(command).wait();
    };
    EXPECT_EQ(call("Activate", {"{'activation-token': <'token'>}"}), 0);
    EXPECT_EQ(call("ActivateAction", {"none", "[<1>]", "{}"}), 0);
    EXPECT_EQ(call("Open", {"@as []", "{}"}), 0);
    const std::string address = "file://" + home.path().string() + "/zwei%20%232%20%C3%A4.mossbit";
    EXPECT_EQ(call("Open", {"['" + address + "', 'file:///missing.mossbit']", "{}"}), 0);
    ASSERT_TRUE(end(*program));
    EXPECT_EQ(autosave(), two);
}

TEST_F(Lifecycle, CopiesWithoutABusDoNotFightOverTheAutosave) {
    store("one.mossbit", one);
    store("two.mossbit", two);
    const auto first = startFirst({"one.mossbit"});
    ASSERT_TRUE(end(*start({"two.mossbit"})));
    EXPECT_EQ(autosave(), std::nullopt);
    first->kill(SIGKILL);
    ASSERT_TRUE(end(*start({"two.mossbit"})));
    EXPECT_EQ(autosave(), two);
}

TEST_F(Lifecycle, StartsAloneWhenTheFirstCopyHangs) {
    startBus();
    const auto first = startFirst();
    ::kill(first->id(), SIGSTOP);
    EXPECT_TRUE(end(*start()));
    ::kill(first->id(), SIGCONT);
    EXPECT_TRUE(end(*first));
}

TEST_F(Lifecycle, OutlivesTheBus) {
    startBus();
    store("one.mossbit", one);
    const auto program = startFirst({"one.mossbit"});
    bus->kill();
    EXPECT_TRUE(end(*program));
    EXPECT_EQ(autosave(), one);
}

TEST_F(Lifecycle, RefusesWhatIsNoProjectAndGoesOn) {
    std::filesystem::create_directory(home / "folder.mossbit");
    putBytes(home / "broken.mossbit", "{");
    putBytes(home / "huge.mossbit", "{");
    std::filesystem::resize_file(home / "huge.mossbit", std::uintmax_t{1} << 30);
    for (const char* file : {"folder.mossbit", "broken.mossbit", "huge.mossbit", "missing.mossbit",
                             "http://example.org/a.mossbit"})
        EXPECT_TRUE(end(*start({file}))) << file;
    EXPECT_EQ(autosave(), Project());
}

} // namespace
} // namespace mossbit
