#include "Platform/QtMainLoop.h"

#include <QBasicTimer>
#include <QObject>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace mossbit {

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// A precise timer that fires once per `arm`. Coarse ones come up to 5 % late.
class Timer : public MainLoop::Task, private QObject {
public:
    explicit Timer(std::function<void()> action) : m_action(std::move(action)) {}

protected:
    void arm(std::chrono::milliseconds delay) {
        m_timer.start(static_cast<int>(std::max<std::int64_t>(delay.count(), 0)), Qt::PreciseTimer,
                      this);
    }

    /// Runs before the action, which may destroy this object.
    virtual void fired() { m_timer.stop(); }

private:
    void timerEvent(QTimerEvent*) override {
        fired();
        const auto action = m_action;
        action();
    }

    std::function<void()> m_action;
    QBasicTimer m_timer;
};

class SingleTimer final : public Timer {
public:
    SingleTimer(std::chrono::milliseconds delay, std::function<void()> action)
        : Timer(std::move(action)) {
        arm(delay);
    }
};

/// Timers count whole milliseconds, which 1/60 s is not: each step aims at its own multiple of the
/// interval, so that rounding does not add up.
class RepeatingTimer final : public Timer {
public:
    RepeatingTimer(Seconds interval, std::function<void()> action)
        : Timer(std::move(action)), m_interval(interval) {
        armNext();
    }

private:
    void fired() override { armNext(); }

    void armNext() {
        const Seconds passed = Clock::now() - m_start;
        // A timer may fire a little early; the step that it was armed for then is not repeated.
        m_step = std::max(m_step + 1, std::floor(passed / m_interval) + 1);
        arm(std::chrono::ceil<std::chrono::milliseconds>(m_step * m_interval - passed));
    }

    const Seconds m_interval;
    const Clock::time_point m_start = Clock::now();
    double m_step = 0;
};

} // namespace

std::unique_ptr<MainLoop::Task> QtMainLoop::after(std::chrono::milliseconds delay,
                                                  std::function<void()> action) {
    return std::make_unique<SingleTimer>(delay, std::move(action));
}

std::unique_ptr<MainLoop::Task> QtMainLoop::every(std::chrono::duration<double> interval,
                                                  std::function<void()> action) {
    return std::make_unique<RepeatingTimer>(interval, std::move(action));
}

} // namespace mossbit
