#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace mossbit {

/// Waits for something that another thread or process does; false if it does not come in time.
inline bool waitUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace mossbit
