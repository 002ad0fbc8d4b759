#include "Tests/Support/Desktop.h"

#include <sstream>
#include <stdexcept>

namespace mossbit {

namespace {

void require(bool cameUp, const char* what) {
    if (!cameUp)
        throw std::runtime_error(std::string(what) + " did not come up");
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

} // namespace

Desktop::Desktop() {
    for (const char* variable :
         {"QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR", "WAYLAND_DISPLAY",
          "XDG_CURRENT_DESKTOP", "SESSION_MANAGER", "AT_SPI_BUS_ADDRESS", "DESKTOP_STARTUP_ID"})
        unsetenv(variable);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    startScreen();
    startBus();
    startWindowManager();
}

void Desktop::startScreen() {
    const auto number = m_files / "display";
    m_screen.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                              "1600x1200x24", "-nolisten", "tcp", "-noreset"},
                     number);
    require(waitUntil([&] { return bytesOf(number).ends_with('\n'); }), "Xvfb");
    setenv("DISPLAY", (':' + firstLine(bytesOf(number))).c_str(), 1);
}

void Desktop::startWindowManager() {
    m_windowManager.emplace(std::vector<std::string>{"openbox", "--sm-disable"});
    // One that still starts would miss a window that appears meanwhile; this one answers.
    require(waitUntil([&] {
                Process({"xdotool", "set_num_desktops", "1"}).wait();
                return firstLine(outputOf({"xdotool", "get_num_desktops"})) == "1";
            }),
            "openbox");
}

std::string Desktop::outputOf(const std::vector<std::string>& command) const {
    const auto file = m_files / "output";
    Process(command, file).wait();
    return bytesOf(file);
}

std::string Desktop::activeWindow() const {
    return firstLine(outputOf({"xdotool", "getactivewindow"}));
}

bool Desktop::waitForTitle(const std::string& title) const {
    return waitUntil([&] {
        return firstLine(outputOf({"xdotool", "getactivewindow", "getwindowname"})) == title;
    });
}

void Desktop::run(const std::string& script) {
    putBytes(m_files / "script", script + '\n');
    Process({"xdotool", m_files / "script"}).wait();
}

void Desktop::drag(Point from, Point to) {
    std::ostringstream script;
    script << "getactivewindow\n";
    constexpr int steps = 4;
    for (int step = 0; step <= steps; ++step) {
        script << "mousemove --window %1 " << from.x + (to.x - from.x) * step / steps << ' '
               << from.y + (to.y - from.y) * step / steps << '\n';
        if (step == 0)
            script << "mousedown 1\n";
    }
    run(script.str() + "mouseup 1");
}

void Desktop::type(const std::string& text) {
    Process({"xdotool", "type", "--delay", "0", text}).wait();
}

bool Desktop::waitForPixel(Point point, const std::string& color) const {
    const std::string place = "1x1+" + std::to_string(point.x) + '+' + std::to_string(point.y);
    return waitUntil([&] {
        return outputOf(
                   {"import", "-window", activeWindow(), "-crop", place, "-depth", "8", "txt:-"})
                   .find(color) != std::string::npos;
    });
}

} // namespace mossbit
