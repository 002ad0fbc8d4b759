#include "Tests/Support/Desktop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <optional>
#include <random>
#include <sstream>
#include <string>

// Someone who knows nothing presses whatever there is. Reports of the sanitizers, in a build that
// has them, are written to files of their own.
namespace mossbit {
namespace {

using Words = std::vector<std::string>;

Words words(const std::string& text) {
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

class Monkey : public testing::Test {
protected:
    static constexpr unsigned seed = 20261122;

    void SetUp() override {
        const std::string reports = "log_path=" + (reportFolder / "report").string();
        setenv("ASAN_OPTIONS", reports.c_str(), 1);
        setenv("UBSAN_OPTIONS", (reports + ":print_stacktrace=1").c_str(), 1);
        // The wheel beside a window that just became smaller would turn to another one.
        desktop.run("set_num_desktops 1");
        putBytes(desktop / "broken.mossbit", "{");
        std::cout << "Seed " << seed << '\n';
    }

    /// Plays at least so many events; a gesture such as a drag is one.
    void play(int count) {
        ASSERT_NO_FATAL_FAILURE(start());
        for (events = 0; events < count;) {
            SCOPED_TRACE("after event " + std::to_string(events));
            std::optional<Desktop::Window> window;
            // The last command may have been to quit, and answered only now.
            ASSERT_TRUE(waitUntil(
                [&] { return (window = workableWindow()).has_value() || !program->isRunning(); }));
            if (window)
                desktop.run(batch(*window));
            ASSERT_NO_FATAL_FAILURE(hearFromIt());
        }
        program->kill(SIGTERM);
        EXPECT_EQ(program->wait(), 0);
        expectNoReports();
        EXPECT_NO_THROW(EXPECT_TRUE(desktop.autosave()));
    }

private:
    std::size_t below(std::size_t bound) { return random() % bound; }
    bool oneIn(std::size_t bound) { return below(bound) == 0; }
    std::string oneOf(const Words& words) { return words[below(words.size())]; }

    /// A press beside the window may have brought up a menu of the desktop, which keeps the
    /// keyboard until it is left, or have taken the keyboard from every window.
    std::optional<Desktop::Window> workableWindow() {
        auto window = desktop.activeWindow();
        if (!window) {
            desktop.run("mouseup 1\nmouseup 3\nkeyup ctrl\nkeyup shift\nkey --delay 0 Escape\n");
            isAnswering(); // Brings its window to the front.
        }
        return window;
    }

    /// Anywhere inside the window but on the menu bar.
    std::string somewhere(const Desktop::Window& window) {
        constexpr int menuBar = 24;
        const std::size_t x = below(static_cast<std::size_t>(window.width));
        const std::size_t y = menuBar + below(static_cast<std::size_t>(window.height - menuBar));
        return "mousemove --window " + window.id + ' ' + std::to_string(x) + ' ' +
               std::to_string(y) + '\n';
    }

    std::string key() {
        static const Words keys =
            words("space Return Escape Tab shift+Tab BackSpace Delete Left Right Up Down Home End "
                  "Prior Next ctrl+a ctrl+z ctrl+z ctrl+shift+z ctrl+l ctrl+c ctrl+v ctrl+x "
                  "shift+End ctrl+1 ctrl+2 ctrl+3 ctrl+4 0 1 9 minus a");
        return "key --delay 0 " + oneOf(keys) + '\n';
    }

    std::string drag(const Desktop::Window& window) {
        std::string script = somewhere(window) + "mousedown 1\n";
        for (std::size_t moves = below(4); moves > 0; --moves)
            script += somewhere(window) + (oneIn(8) ? key() : "");
        // A release can get lost.
        return script + (oneIn(20) ? "" : "mouseup 1\n");
    }

    std::string gesture(const Desktop::Window& window) {
        // 4 to 7 are the wheel.
        static const Words buttons = words("1 1 1 1 1 3 3 2 4 5 6 7");
        const std::string click = "click --delay 0 " + oneOf(buttons) + '\n';
        const std::size_t choice = below(10);
        if (choice < 2)
            return key();
        if (choice < 4)
            return drag(window);
        if (choice < 5)
            return somewhere(window) + "click --repeat 2 --delay 1 1\n";
        if (choice < 6) {
            const std::string modifier = oneIn(2) ? "ctrl\n" : "shift\n";
            return somewhere(window) + "keydown --delay 0 " + modifier + click +
                   "keyup --delay 0 " + modifier;
        }
        return somewhere(window) + click;
    }

    /// What may bring up a dialog, end the program or leave the pointer outside: a shortcut, a walk
    /// through a menu, another size.
    std::string command(const Desktop::Window& window) {
        static const Words shortcuts =
            words("ctrl+n ctrl+o ctrl+o ctrl+s ctrl+s ctrl+shift+s ctrl+e ctrl+w");
        static const Words menus = words("alt+f alt+e alt+p alt+h");
        // Whatever menu, button or text is open or held must not take the keys instead.
        const std::string script =
            "mouseup 1\nkeyup ctrl\nkeyup shift\nkey --delay 0 Escape Escape\n";
        if (oneIn(4))
            return script + "windowsize " + window.id + ' ' + std::to_string(800 + below(700)) +
                   ' ' + std::to_string(500 + below(600)) + '\n';
        if (oneIn(3))
            return script + "key --delay 0 " + oneOf(shortcuts) + '\n';
        std::string walk = script + "key --delay 0 " + oneOf(menus);
        for (std::size_t downs = below(9); downs > 0; --downs)
            walk += " Down";
        return walk + (oneIn(4) ? " Escape Escape\n" : " Return\n");
    }

    /// Only the last one is a command: random presses in a dialog about files would leave the
    /// scratch home, and beside the window they would be about the desktop.
    std::string batch(const Desktop::Window& window) {
        std::string script;
        for (std::size_t count = 10 + below(40); count > 0; --count, ++events)
            script += gesture(window);
        ++events;
        return script + command(window);
    }

    /// Waits until the program's main thread answers, and then answers what it asks. Starts it
    /// again if it was told to quit.
    void hearFromIt() {
        for (int round = 0;; ++round) {
            if (!isAnswering()) {
                ASSERT_TRUE(waitUntil([&] { return !program->isRunning(); })) << "it hangs";
                ASSERT_EQ(program->wait(), 0);
                expectNoReports();
                ASSERT_NO_FATAL_FAILURE(start());
            }
            // A dialog without the keyboard is going, or appeared when the window was just called
            // to the front, and gets it by the next call.
            bool isAsking = false;
            ASSERT_TRUE(waitUntil([&] {
                isAsking = isDialog(desktop.activeTitle());
                return isAsking || !hasDialog() || !isAnswering();
            })) << "a dialog without the keyboard";
            if (!isAsking)
                return;
            ASSERT_LT(round, 40) << "a dialog stays";
            desktop.run(answer(round));
        }
    }

    void start() {
        program = desktop.start();
        ASSERT_TRUE(waitUntil([&] { return isAnswering() || !program->isRunning(); }));
        ASSERT_TRUE(waitUntil([&] { return desktop.activeWindow().has_value(); }));
    }

    bool isAnswering() { return desktop.call("ActivateAction", {"none", "[]", "{}"}); }

    static bool isDialog(const std::string& title) {
        static const Words titles = {"Mossbit", "Save", "Open", "Export WAV", "About Mossbit"};
        return std::find(titles.begin(), titles.end(), title) != titles.end();
    }

    /// Whether the window manager knows more windows than the main one; menus are none to it.
    bool hasDialog() const {
        return desktop.outputOf({"xprop", "-root", "_NET_CLIENT_LIST"}).find(',') !=
               std::string::npos;
    }

    std::string answer(int round) {
        static const Words names = {"song", "other", "broken.mossbit", "absent"};
        if (round > 10 || oneIn(4))
            return "key --delay 0 Escape\n";
        if (oneIn(2))
            return "key --delay 0 " + std::string(oneIn(2) ? "Return" : "Tab Return") + '\n';
        return "type --delay 0 " + oneOf(names) + "\nkey --delay 0 Return\n";
    }

    void expectNoReports() const {
        for (const auto& file : std::filesystem::directory_iterator(reportFolder.path()))
            ADD_FAILURE() << bytesOf(file);
    }

    Desktop desktop;
    const ScratchFolder reportFolder;
    std::unique_ptr<Process> program;
    std::mt19937 random{seed};
    int events = 0;
};

TEST_F(Monkey, ThousandEvents) {
    play(1000);
}

TEST_F(Monkey, TwentyThousandEvents) {
    play(20'000);
}

} // namespace
} // namespace mossbit
