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
        return add(Seconds(delay), Seconds(0), std::move(action));
    }

    [[nodiscard]] std::unique_ptr<Task> every(Seconds interval,
                                              std::function<void()> action) override {
        return add(interval, interval, std::move(action));
    }

    /// Moves the clock and runs what becomes due, in order.
    void advance(Seconds duration) {
        const Seconds end = m_now + duration;
        for (;;) {
            const auto next = std::ranges::min_element(m_entries, {}, &Entry::due);
            // Half a microsecond of slack: sums of sixtieths are not exact.
            if (next == m_entries.end() || next->due > end + Seconds(5e-7))
                break;
            m_now = std::max(m_now, next->due);
            const auto action = next->action;
            if (next->interval > Seconds(0))
                next->due += next->interval;
            else
                m_entries.erase(next);
            action();
        }
        m_now = end;
    }

    std::size_t pendingCount() const { return m_entries.size(); }

private:
    struct Entry {
        int id;
        Seconds due;
        Seconds interval;
        std::function<void()> action;
    };

    struct Handle : Task {
        Handle(FakeMainLoop& owner, int taskId) : loop(owner), id(taskId) {}
        ~Handle() override {
            std::erase_if(loop.m_entries, [this](const Entry& entry) { return entry.id == id; });
        }
        FakeMainLoop& loop;
        int id;
    };

    std::unique_ptr<Task> add(Seconds delay, Seconds interval, std::function<void()> action) {
        m_entries.push_back({++m_lastId, m_now + delay, interval, std::move(action)});
        return std::make_unique<Handle>(*this, m_lastId);
    }

    Seconds m_now{0};
    int m_lastId = 0;
    std::vector<Entry> m_entries;
};

} // namespace mossbit
