#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

namespace mossbit {

/// A program that a test runs beside itself; ended with the object.
class Process {
public:
    /// Starts `command`, found in the search path, with this process's environment. Its output
    /// goes to `output`, and what it says on standard error to nowhere. Throws
    /// `std::system_error`.
    explicit Process(const std::vector<std::string>& command,
                     const std::filesystem::path& output = "/dev/null");
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t id() const { return m_id; }
    bool isRunning();
    /// Ends it at once, or with another signal in its own time, and waits for that.
    void kill(int signal = 9);
    /// Waits for its end and returns its exit status; 128 more than the signal if one ended it.
    int wait();

private:
    pid_t m_id = 0;
    int m_status = 0;
};

} // namespace mossbit
