#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace mossbit {

/// Work that the main thread does later. All calls and all actions run on the main thread, also
/// while a menu or a modal dialog is open.
class MainLoop {
public:
    /// A pending action; destroying it cancels the action. An action may destroy its own handle.
    class Task {
    public:
        virtual ~Task() = default;
    };

    virtual ~MainLoop() = default;

    /// Runs `action` once, `delay` from now on a monotonic clock.
    [[nodiscard]] virtual std::unique_ptr<Task> after(std::chrono::milliseconds delay,
                                                      std::function<void()> action) = 0;
};

} // namespace mossbit
