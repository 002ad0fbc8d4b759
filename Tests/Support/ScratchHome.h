#pragma once

#include "Services/ProjectStore.h"
#include "Tests/Support/Process.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace mossbit {

/// An empty home for the real program. What a test starts finds it in this process's environment,
/// so there is one at a time.
class ScratchHome : public ScratchFolder {
public:
    ScratchHome() {
        for (const char* variable :
             {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
            setenv(variable, path().c_str(), 1);
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", busAddress().c_str(), 1);
        std::filesystem::current_path(path());
    }

    ~ScratchHome() { std::filesystem::current_path("/"); }

    /// Before this, there is no session bus. Throws `std::runtime_error` if it does not come up.
    void startBus() {
        m_bus.emplace(std::vector<std::string>{"dbus-daemon", "--session", "--nofork",
                                               "--nopidfile", "--address=" + busAddress()});
        if (!waitUntil([&] { return std::filesystem::exists(*this / "bus"); }))
            throw std::runtime_error("dbus-daemon did not come up");
    }

    /// Starts the program, working in here, without waiting.
    static std::unique_ptr<Process> start(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command = {MOSSBIT_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return std::make_unique<Process>(command);
    }

    /// Calls a method by which desktops talk to the running program; false without a good answer.
    static bool call(const std::string& method, const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {"gdbus",
                                            "call",
                                            "--session",
                                            "--timeout=30",
                                            "--dest=com.quillark.mossbit",
                                            "--object-path=/com/quillark/mossbit",
                                            "--method=org.freedesktop.Application." + method};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return Process(command).wait() == 0;
    }

    /// How many copies of the program have the name on the bus, or want it next.
    std::ptrdiff_t ownersInWaiting() const {
        const auto answer = *this / "owners";
        Process({"gdbus", "call", "--session", "--dest=org.freedesktop.DBus", "--object-path=/",
                 "--method=org.freedesktop.DBus.ListQueuedOwners", "com.quillark.mossbit"},
                answer)
            .wait();
        return std::ranges::count(bytesOf(answer), ':');
    }

    std::filesystem::path store(const char* name, const Project& project) const {
        putBytes(*this / name, ProjectStore::encode(project));
        return *this / name;
    }

    std::optional<Project> autosave() const {
        const auto file = *this / "Mossbit/Autosave.mossbit";
        if (!std::filesystem::exists(file))
            return std::nullopt;
        return ProjectStore::read(file);
    }

private:
    std::string busAddress() const { return "unix:path=" + (*this / "bus").string(); }

    std::optional<Process> m_bus;
};

} // namespace mossbit
