#pragma once

#include "Tests/Support/ScratchHome.h"

#include <cstdint>
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

    /// The inside of a window's frame; the place is that on the screen.
    struct Window {
        std::string id;
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };

    /// Throws `std::runtime_error` if a part of it does not come up.
    Desktop();

    /// The window that has the keyboard; nothing while none has, or while it is just vanishing.
    std::optional<Window> activeWindow() const;
    /// Its title; empty if there is none.
    std::string activeTitle() const;
    /// Waits until the window that has the keyboard has that title. False if that does not happen.
    bool waitForTitle(const std::string& title) const;

    // Pointer, in the window that has the keyboard.
    /// Presses at `from`, moves in a few steps, releases at `to`.
    void drag(Point from, Point to);

    /// Presses and releases keys by their names: "space", "ctrl+shift+z".
    void key(const std::string& keys) { run("key " + keys); }
    /// Types ASCII text.
    void type(const std::string& text);
    /// Has the window manager close the window that has the keyboard.
    void closeWindow() { key("alt+F4"); }

    /// Plays xdotool's commands, one a line.
    void run(const std::string& script);

    /// What the screen shows there in the window that has the keyboard, as 0xRRGGBB. The pointer
    /// is in the picture.
    std::optional<std::uint32_t> pixel(Point point) const;
    bool waitForPixel(Point point, std::uint32_t color) const;

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
