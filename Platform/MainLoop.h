#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace mossbit {

/// Work that the main thread does later. All calls and all actions run on the main thread; an open
/// menu or modal dialog does not hold actions up.
class MainLoop {
public:
    /// The handle of a pending action. Destroying it cancels the action, which may do so itself.
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
