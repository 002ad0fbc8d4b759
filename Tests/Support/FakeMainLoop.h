#pragma once

#include "Platform/MainLoop.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace mossbit {

/// A main loop in virtual time: nothing happens until a test moves the clock.
class FakeMainLoop : public MainLoop {
public:
    using Seconds = std::chrono::duration<double>;

    [[nodiscard]] std::unique_ptr<Task> after(std::chrono::milliseconds delay,
                                              std::function<void()> action) override {
        return std::make_unique<Timer>(*this, delay, std::move(action));
    }

    /// Moves the clock and runs what becomes due, in order.
    void advance(Seconds duration) {
        const Seconds end = m_now + duration;
        for (;;) {
            const auto next = std::ranges::min_element(m_pending, {}, &Timer::due);
            // Half a microsecond of slack: sums of sixtieths are not exact.
            if (next == m_pending.end() || (*next)->due > end + Seconds(5e-7))
                break;
            m_now = std::max(m_now, (*next)->due);
            // A copy, as it may destroy its timer.
            const std::function<void()> action = (*next)->action;
            m_pending.erase(next);
            action();
        }
        m_now = end;
    }

    std::size_t pendingCount() const { return m_pending.size(); }

private:
    struct Timer : Task {
        Timer(FakeMainLoop& owner, Seconds delay, std::function<void()> work)
            : loop(owner), due(owner.m_now + delay), action(std::move(work)) {
            loop.m_pending.push_back(this);
        }
        ~Timer() override { std::erase(loop.m_pending, this); }

        FakeMainLoop& loop;
        Seconds due;
        std::function<void()> action;
    };

    Seconds m_now{0};
    std::vector<Timer*> m_pending;
};

} // namespace mossbit
