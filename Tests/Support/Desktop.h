#pragma once

#include "Tests/Support/Process.h"
#include "Tests/Support/ScratchFolder.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace mossbit {

/// A desktop of the test's own: screen, window manager, session bus and an empty home. What it
/// starts finds them in this process's environment, so there is one at a time.
class Desktop {
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

    /// Throws `std::runtime_error` if one of them does not come up.
    Desktop();
    ~Desktop();

    /// Also where the program keeps its files: Mossbit/Autosave.mossbit is in it.
    const ScratchFolder& home() const { return m_home; }

    /// Starts the program, working in `home`, without waiting.
    std::unique_ptr<Process> start(const std::vector<std::string>& arguments = {});

    void killBus() { m_bus->kill(); }

    /// The window that has the keyboard; nothing while none has, or while it is just vanishing.
    std::optional<Window> activeWindow() const;
    /// Its title; empty if there is none.
    std::string activeTitle() const;
    /// Waits until the window that has the keyboard has that title. False if that does not happen.
    bool waitForTitle(const std::string& title) const;

    // Pointer, in the window that has the keyboard.
    void click(Point point, int button = 1);
    void secondaryClick(Point point) { click(point, 3); }
    /// Presses at `from`, moves in a few steps, releases at `to`.
    void drag(Point from, Point to);

    /// Presses and releases keys by their names: "space", "ctrl+shift+z".
    void key(const std::string& keys);
    /// Types ASCII text.
    void type(const std::string& text);
    /// Presses the box that closes the window on its frame.
    void closeWindow();
    /// Asks the window manager to give the window that has the keyboard another size.
    void resize(int width, int height);
    /// Puts the window that has the keyboard away.
    void minimize();

    /// Plays xdotool's commands, one a line.
    void run(const std::string& script);

    /// What the screen shows there in the window that has the keyboard, as 0xRRGGBB. The pointer
    /// is in the picture.
    std::optional<std::uint32_t> pixel(Point point) const;
    bool waitForPixel(Point point, std::uint32_t color) const;
    /// Stores what the screen shows as a PNG file.
    void screenshot(const std::filesystem::path& file) const;

    /// What a program prints.
    std::string outputOf(const std::vector<std::string>& command) const;

private:
    void startScreen();
    void startBus();
    void startWindowManager();
    void xdotool(std::vector<std::string> arguments) const;
    std::string activeId() const;

    const ScratchFolder m_home;
    /// The servers' own files: what a test finds in `home` is the program's doing.
    const ScratchFolder m_servers;
    std::optional<Process> m_screen;
    std::optional<Process> m_bus;
    std::optional<Process> m_windowManager;
};

} // namespace mossbit
