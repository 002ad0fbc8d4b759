#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace mossbit {

/// Calls a function over and over, on a thread of its own, for as long as the object lives.
class RepeatingThread {
public:
    explicit RepeatingThread(std::function<void()> step)
        : m_thread([this, step = std::move(step)] {
              while (!m_ended)
                  step();
          }) {}
    RepeatingThread(const RepeatingThread&) = delete;
    RepeatingThread& operator=(const RepeatingThread&) = delete;
    ~RepeatingThread() {
        m_ended = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_ended = false;
    std::thread m_thread; // Apple's library has no std::jthread.
};

} // namespace mossbit
