#include "Tests/Support/Desktop.h"

#include "Tests/Support/WaitUntil.h"

#include <cstdlib>
#include <fstream>
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
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        setenv(variable, m_home.path().c_str(), 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    std::filesystem::current_path(m_home.path());
    startScreen();
    startBus();
    startWindowManager();
}

Desktop::~Desktop() {
    std::filesystem::current_path("/");
}

void Desktop::startScreen() {
    const auto number = m_servers / "display";
    // The picture in a file of its own can be looked at without asking the server.
    m_screen.emplace(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                              "1600x1200x24", "-fbdir", m_servers.path(),
                                              "-nolisten", "tcp", "-noreset"},
                     number);
    require(waitUntil([&] { return bytesOf(number).ends_with('\n'); }), "Xvfb");
    std::string display = ":";
    display += firstLine(bytesOf(number));
    setenv("DISPLAY", display.c_str(), 1);
}

void Desktop::startBus() {
    const std::string socket = m_servers / "bus";
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + socket).c_str(), 1);
    m_bus.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                           "--address=unix:path=" + socket});
    require(waitUntil([&] { return std::filesystem::exists(socket); }), "dbus-daemon");
}

void Desktop::startWindowManager() {
    m_windowManager.emplace(std::vector<std::string>{"openbox", "--sm-disable"});
    require(waitUntil([&] {
                return outputOf({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}).find("0x") !=
                       std::string::npos;
            }),
            "openbox");
}

std::unique_ptr<Process> Desktop::start(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {MOSSBIT_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return std::make_unique<Process>(command);
}

std::string Desktop::outputOf(const std::vector<std::string>& command) const {
    const auto file = m_servers / "output";
    Process(command, file).wait();
    return bytesOf(file);
}

std::string Desktop::activeId() const {
    return firstLine(outputOf({"xdotool", "getactivewindow"}));
}

std::optional<Desktop::Window> Desktop::activeWindow() const {
    const std::string id = activeId();
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

void Desktop::xdotool(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "xdotool");
    Process(arguments).wait();
}

void Desktop::run(const std::string& script) {
    putBytes(m_servers / "script", script);
    xdotool({m_servers / "script"});
}

void Desktop::click(Point point, int button) {
    xdotool({"mousemove", "--window", activeId(), std::to_string(point.x), std::to_string(point.y),
             "click", std::to_string(button)});
}

void Desktop::drag(Point from, Point to) {
    const std::string id = activeId();
    constexpr int steps = 4;
    std::vector<std::string> arguments;
    for (int step = 0; step <= steps; ++step) {
        const int x = from.x + (to.x - from.x) * step / steps;
        const int y = from.y + (to.y - from.y) * step / steps;
        for (const std::string& word : {std::string("mousemove"), std::string("--window"), id,
                                        std::to_string(x), std::to_string(y)})
            arguments.push_back(word);
        if (step == 0)
            arguments.insert(arguments.end(), {"mousedown", "1"});
    }
    arguments.insert(arguments.end(), {"mouseup", "1"});
    xdotool(arguments);
}

void Desktop::key(const std::string& keys) {
    xdotool({"key", keys});
}

void Desktop::type(const std::string& text) {
    xdotool({"type", "--delay", "0", text});
}

void Desktop::closeWindow() {
    const auto window = activeWindow();
    if (!window)
        return;
    // From the top right corner inside the frame to the middle of the box.
    constexpr int away = 11;
    xdotool({"mousemove", std::to_string(window->x + window->width - away),
             std::to_string(window->y - away), "click", "1"});
}

void Desktop::resize(int width, int height) {
    xdotool({"windowsize", activeId(), std::to_string(width), std::to_string(height)});
}

void Desktop::minimize() {
    xdotool({"windowminimize", activeId()});
}

std::optional<std::uint32_t> Desktop::pixel(Point point) const {
    const auto window = activeWindow();
    if (!window)
        return std::nullopt;
    // An XWD file: a header of big-endian words, colours of 12 bytes each, rows of blue, green,
    // red and a spare byte.
    constexpr std::size_t headerWords = 25;
    std::ifstream file(m_servers / "Xvfb_screen0", std::ios::binary);
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

void Desktop::screenshot(const std::filesystem::path& file) const {
    Process({"import", "-window", "root", file}).wait();
}

} // namespace mossbit
