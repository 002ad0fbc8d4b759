#pragma once

#include "Tests/Support/ScratchHome.h"

#include <optional>
#include <string>
#include <vector>

namespace mossbit {

/// A desktop of the test's own: home, session bus, screen and window manager.
class Desktop : public ScratchHome {
public:
    /// Pixels, the origin at the top left corner inside a window's frame.
    struct Point {
        int x = 0;
        int y = 0;
    };

    /// Throws `std::runtime_error` if a part of it does not come up.
    Desktop();

    /// The number of the window that has the keyboard, as the X tools take it.
    std::string activeWindow() const;
    /// Waits until the window that has the keyboard has that title. False if that does not happen.
    bool waitForTitle(const std::string& title) const;

    /// Presses at `from` in the window that has the keyboard, moves in a few steps, releases at
    /// `to`.
    void drag(Point from, Point to);

    /// Presses and releases keys by their names: "space", "ctrl+shift+z".
    void key(const std::string& keys) { run("key " + keys); }
    /// Types ASCII text.
    void type(const std::string& text);
    /// Has the window manager close the window that has the keyboard.
    void closeWindow() { key("alt+F4"); }

    /// Plays xdotool's commands, one a line.
    void run(const std::string& script);

    /// Waits until the window that has the keyboard shows that colour, "#RRGGBB", there. False if
    /// that does not happen.
    bool waitForPixel(Point point, const std::string& color) const;

    /// What a program prints.
    std::string outputOf(const std::vector<std::string>& command) const;

private:
    void startScreen();
    void startWindowManager();

    /// Files of the servers and of ours: what a test finds in the home is the program's doing.
    const ScratchFolder m_files;
    std::optional<Process> m_screen;
    std::optional<Process> m_windowManager;
};

} // namespace mossbit
