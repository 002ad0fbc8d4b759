#include "Tests/Support/Desktop.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include <arpa/inet.h>

namespace mossbit {

namespace {

void require(bool cameUp, const char* what) {
    if (!cameUp)
        throw std::runtime_error(std::string(what) + " did not come up");
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

/// What follows `key` in the output of xwininfo.
int numberAfter(const std::string& text, const std::string& key) {
    const std::size_t at = text.find(key);
    return at == std::string::npos ? 0 : std::atoi(text.c_str() + at + key.size());
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
    // The picture in a file of its own can be looked at without asking the server.
    m_screen.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                              "1600x1200x24", "-fbdir", m_files.path(), "-nolisten",
                                              "tcp", "-noreset"},
                     number);
    require(waitUntil([&] { return bytesOf(number).ends_with('\n'); }), "Xvfb");
    setenv("DISPLAY", (':' + firstLine(bytesOf(number))).c_str(), 1);
}

void Desktop::startWindowManager() {
    m_windowManager.emplace(std::vector<std::string>{"openbox", "--sm-disable"});
    require(waitUntil([&] {
                return outputOf({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}).find("0x") !=
                       std::string::npos;
            }),
            "openbox");
}

std::string Desktop::outputOf(const std::vector<std::string>& command) const {
    const auto file = m_files / "output";
    Process(command, file).wait();
    return bytesOf(file);
}

std::optional<Desktop::Window> Desktop::activeWindow() const {
    const std::string id = firstLine(outputOf({"xdotool", "getactivewindow"}));
    if (id.empty())
        return std::nullopt;
    const std::string info = outputOf({"xwininfo", "-id", id});
    if (info.find("IsViewable") == std::string::npos)
        return std::nullopt;
    return Window{.id = id,
                  .x = numberAfter(info, "Absolute upper-left X:"),
                  .y = numberAfter(info, "Absolute upper-left Y:"),
                  .width = numberAfter(info, "Width:"),
                  .height = numberAfter(info, "Height:")};
}

std::string Desktop::activeTitle() const {
    return firstLine(outputOf({"xdotool", "getactivewindow", "getwindowname"}));
}

bool Desktop::waitForTitle(const std::string& title) const {
    return waitUntil([&] { return activeTitle() == title; });
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

std::optional<std::uint32_t> Desktop::pixel(Point point) const {
    const auto window = activeWindow();
    if (!window)
        return std::nullopt;
    // An XWD file: a header of big-endian words, colours of 12 bytes each, rows of blue, green,
    // red and a spare byte.
    constexpr std::size_t headerWords = 25;
    std::ifstream file(m_files / "Xvfb_screen0", std::ios::binary);
    std::uint32_t header[headerWords] = {};
    file.read(reinterpret_cast<char*>(header), sizeof header);
    const std::size_t rows = ntohl(header[0]) + std::size_t{12} * ntohl(header[19]);
    const std::size_t rowBytes = ntohl(header[12]);
    file.seekg(static_cast<std::streamoff>(
        rows + rowBytes * static_cast<std::size_t>(window->y + point.y) +
        std::size_t{4} * static_cast<std::size_t>(window->x + point.x)));
    unsigned char bytes[4] = {};
    if (!file.read(reinterpret_cast<char*>(bytes), sizeof bytes))
        return std::nullopt;
    return std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[0];
}

bool Desktop::waitForPixel(Point point, std::uint32_t color) const {
    return waitUntil([&] { return pixel(point) == color; });
}

} // namespace mossbit
