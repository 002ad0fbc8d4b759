#include "Tests/Support/Desktop.h"
#include "Tests/Support/SongBuilder.h"
#include "Tests/Support/SoundServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The real program, as a desktop starts it, works with it and ends it.
namespace mossbit {
namespace {

using Arguments = std::vector<std::string>;

/// With a window, worked with the mouse and the keyboard.
class Window : public testing::Test {
protected:
    // Pixels, in the window at its first size: a note of four sixteenths on C5, drawn from its
    // start to its end, and the Play button beside its icon.
    static constexpr Desktop::Point noteStart{133, 330};
    static constexpr Desktop::Point noteEnd{197, 330};
    static constexpr Desktop::Point noteMiddle{150, 330};
    static constexpr Desktop::Point playFace{103, 34};
    static constexpr const char* playColor = "#F2D45C";
    static constexpr const char* idleColor = "#1B2132";
    const Project drawn = song().note(72, 4, 4);

    /// Starts the program and waits for its window; false if that does not come.
    bool open(const Arguments& arguments = {}, const std::string& title = "Untitled") {
        program = desktop.start(arguments);
        return desktop.waitForTitle(title);
    }

    bool draw() {
        desktop.drag(noteStart, noteEnd);
        return desktop.waitForTitle("Untitled •");
    }

    /// Closes the window and waits for the program's end; false if that is not in good order.
    bool close() {
        desktop.closeWindow();
        return program->wait() == 0;
    }

    /// Answers the file panel that is about to open.
    void chooseFile(const std::string& panel, const std::string& name) {
        ASSERT_TRUE(desktop.waitForTitle(panel));
        desktop.key("ctrl+a");
        desktop.type(name);
        desktop.key("Return");
    }

    static bool haveTheSameNotes(const std::optional<Project>& found, const Project& expected) {
        return found && found->hasNotes() &&
               found->channels[0].notes[0].length == expected.channels[0].notes[0].length &&
               found->channels[0].notes.size() == expected.channels[0].notes.size();
    }

    Desktop desktop;
    std::unique_ptr<Process> program;
};

TEST_F(Window, DrawsPlaysAndComesBack) {
    ASSERT_TRUE(open());
    const std::string geometry =
        desktop.outputOf({"xdotool", "getwindowgeometry", desktop.activeWindow()});
    EXPECT_TRUE(geometry.find("Geometry: 1100x7") != std::string::npos) << geometry;
    ASSERT_TRUE(draw());
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, playColor));
    desktop.key("space");
    EXPECT_TRUE(desktop.waitForPixel(playFace, idleColor));
    desktop.key("BackSpace ctrl+z");
    EXPECT_TRUE(close());
    EXPECT_TRUE(haveTheSameNotes(desktop.autosave(), drawn));
    ASSERT_TRUE(open());
    EXPECT_TRUE(desktop.waitForPixel(noteMiddle, playColor));
}

TEST_F(Window, SavesAndExports) {
    ASSERT_TRUE(open());
    ASSERT_TRUE(draw());
    desktop.key("ctrl+s");
    chooseFile("Save", "my song");
    ASSERT_TRUE(desktop.waitForTitle("my song"));
    const auto file = desktop / "my song.mossbit";
    EXPECT_TRUE(haveTheSameNotes(ProjectStore::read(file), drawn));
    desktop.key("ctrl+e");
    chooseFile("Export WAV", "take one");
    ASSERT_TRUE(desktop.waitForTitle("my song"));
    const auto rendered = desktop / "rendered.wav";
    ASSERT_EQ(Process({MOSSBIT_RENDER, file, rendered}).wait(), 0);
    EXPECT_TRUE(waitUntil([&] { return bytesOf(desktop / "take one.wav") == bytesOf(rendered); }));
    EXPECT_GT(bytesOf(rendered).size(), 1000);
    // Its autosave would come later.
    desktop.key("BackSpace");
    EXPECT_TRUE(close());
    EXPECT_FALSE(ProjectStore::read(file).hasNotes());
}

/// GTK's panels, which have a main loop and an idea of their own of when to ask.
TEST_F(Window, AsksOnceWhateverThePanelAndEndsBehindIt) {
    setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);
    ASSERT_TRUE(open());
    ASSERT_TRUE(draw());
    putBytes(desktop / "song.v2.mossbit", "older");
    desktop.key("ctrl+s");
    ASSERT_TRUE(desktop.waitForTitle("Save"));
    const std::string role =
        desktop.outputOf({"xprop", "-id", desktop.activeWindow(), "WM_WINDOW_ROLE"});
    ASSERT_TRUE(role.find("Gtk") != std::string::npos) << "is qt6-gtk-platformtheme installed?";
    chooseFile("Save", "song.v2");
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    EXPECT_EQ(bytesOf(desktop / "song.v2.mossbit"), "older");
    desktop.key("Escape");
    ASSERT_TRUE(desktop.waitForTitle("Save")) << "back to the panel";
    desktop.store("other.mossbit", drawn);
    Process other({"env", "DBUS_SESSION_BUS_ADDRESS=none:", MOSSBIT_PROGRAM, "other.mossbit"});
    ASSERT_TRUE(desktop.waitForTitle("other"));
    EXPECT_EQ(desktop.start()->wait(), 0);
    ASSERT_TRUE(desktop.waitForTitle("Save")) << "a second start calls the panel";
    // Brings up a message for which GTK runs its own main loop.
    chooseFile("Save", "nowhere/song");
    ASSERT_TRUE(desktop.waitForTitle(""));
    program->kill(SIGTERM);
    EXPECT_EQ(program->wait(), 0);
    EXPECT_TRUE(haveTheSameNotes(desktop.autosave(), drawn));
}

TEST_F(Window, TakesTheFileOfASecondStart) {
    desktop.store("one.mossbit", drawn);
    ASSERT_TRUE(open());
    ASSERT_TRUE(draw());
    EXPECT_EQ(desktop.start({"one.mossbit"})->wait(), 0);
    ASSERT_TRUE(desktop.waitForTitle("Mossbit"));
    desktop.key("Tab Return");
    ASSERT_TRUE(desktop.waitForTitle("one"));
    desktop.run("getactivewindow windowminimize");
    ASSERT_TRUE(desktop.waitForTitle(""));
    EXPECT_EQ(desktop.start()->wait(), 0);
    EXPECT_TRUE(desktop.waitForTitle("one"));
}

TEST_F(Window, IsWrittenInAndReadByScreenReaders) {
    // The system's own Python: another one does not have the package for the bus.
    EXPECT_EQ(desktop.outputOf({"/usr/bin/python3", "-B", MOSSBIT_SCREEN_READER, MOSSBIT_PROGRAM}),
              "passed\n");
    const auto left = desktop.autosave();
    ASSERT_TRUE(left);
    EXPECT_EQ(left->channels[0].notes.size(), 8);
}

struct SoundServerFirst {
    SoundServer server;
};

/// The server's environment first: the desktop's home and bus replace those.
class WindowWithSound : public SoundServerFirst, public Window {
protected:
    WindowWithSound() { setenv("SDL_AUDIODRIVER", "pulseaudio", 1); }
};

TEST_F(WindowWithSound, PlaysOnWithANewServer) {
    ASSERT_TRUE(server.start());
    desktop.store("song.mossbit", song({.bars = 4}).note(48, 0, 64));
    ASSERT_TRUE(open({"song.mossbit"}, "song"));
    desktop.key("space");
    EXPECT_TRUE(server.waitForSound());
    server.kill();
    desktop.drag(noteStart, noteEnd);
    EXPECT_TRUE(desktop.waitForPixel(noteMiddle, playColor)) << "the window goes on meanwhile";
    ASSERT_TRUE(server.start());
    EXPECT_TRUE(server.waitForSound());
    EXPECT_TRUE(desktop.waitForPixel(playFace, playColor));
    EXPECT_TRUE(close());
}

/// Without a screen.
class Lifecycle : public testing::Test {
protected:
    Lifecycle() { setenv("QT_QPA_PLATFORM", "offscreen", 1); }

    /// Starts the first copy, which has its name on the bus and the autosave on return.
    std::unique_ptr<Process> startFirst(const Arguments& arguments = {}) {
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

TEST_F(Lifecycle, TakesTheRequestsOfOtherStartsAndOfTheDesktop) {
    home.startBus();
    home.store("one.mossbit", one);
    // Also a name that is no UTF-8.
    home.store("caf\xe9 #2.mossbit", two);
    const std::string address = "file://" + home.path().string() + "/caf%E9%20%232.mossbit";
    const std::vector<std::function<void()>> requests = {
        [&] { EXPECT_EQ(home.start({"caf\xe9 #2.mossbit"})->wait(), 0); },
        [&] { EXPECT_EQ(home.start({address})->wait(), 0); },
        [&] {
            EXPECT_TRUE(home.call("Open", {"['" + address + "', 'file:///no']", "{}"}));
        },
    };
    for (const auto& request : requests) {
        std::filesystem::remove_all(home / "Mossbit");
        const auto first = startFirst({"one.mossbit"});
        request();
        EXPECT_EQ(home.start()->wait(), 0);
        EXPECT_TRUE(home.call("Activate", {"{'activation-token': <'token'>}"}));
        EXPECT_TRUE(home.call("ActivateAction", {"none", "[<1>]", "{}"}));
        EXPECT_TRUE(home.call("Open", {"@as []", "{}"}));
        ASSERT_TRUE(end(*first));
        EXPECT_EQ(home.autosave(), two);
    }
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

TEST_F(Lifecycle, ACopyThatHungLeavesTheFileToTheOneThatOpenedIt) {
    home.startBus();
    home.store("two.mossbit", two);
    for (const bool isStillWaitedFor : {false, true}) {
        home.store("one.mossbit", one);
        const auto first = startFirst({"one.mossbit"});
        EXPECT_TRUE(home.call("Activate", {"{}"})) << "its main loop runs";
        ::kill(first->id(), SIGSTOP);
        const auto second = home.start({"two.mossbit"});
        const auto runsOn = [&] { return home.ownersInWaiting() == 2; };
        // Too late for the first to take the request, and just before the second gives up.
        if (isStillWaitedFor)
            usleep(1'800'000);
        else
            EXPECT_TRUE(waitUntil(runsOn));
        ::kill(first->id(), SIGCONT);
        EXPECT_TRUE(waitUntil(runsOn));
        EXPECT_EQ(home.start()->wait(), 0) << "it answers again";
        EXPECT_TRUE(end(*first));
        EXPECT_EQ(home.autosave(), one);
        EXPECT_EQ(home.start()->wait(), 0) << "the second has its place";
        EXPECT_TRUE(end(*second));
    }
}

TEST_F(Lifecycle, SaysInOneLineThatThereIsNoDisplay) {
    const auto output = home / "output";
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("DISPLAY", ":no", 1);
    EXPECT_EQ(Process({"/bin/sh", "-c", MOSSBIT_PROGRAM " --version 2>&1"}, output).wait(), 1);
    EXPECT_EQ(bytesOf(output), "mossbit: No display can be reached\n");
}

} // namespace
} // namespace mossbit
