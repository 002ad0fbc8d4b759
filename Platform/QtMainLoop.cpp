#include "Platform/QtMainLoop.h"

#include <QTimer>

#include <utility>

namespace mossbit {

namespace {

class Timer final : public MainLoop::Task {
public:
    Timer(std::chrono::milliseconds interval, bool repeats, std::function<void()> action) {
        // Coarse ones come up to 5 % late.
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(!repeats);
        // The connection outlives the timer until the action has returned.
        QObject::connect(&m_timer, &QTimer::timeout, std::move(action));
        m_timer.start(interval);
    }

private:
    QTimer m_timer;
};

} // namespace

std::unique_ptr<MainLoop::Task> QtMainLoop::after(std::chrono::milliseconds delay,
                                                  std::function<void()> action) {
    return std::make_unique<Timer>(delay, false, std::move(action));
}

std::unique_ptr<MainLoop::Task> QtMainLoop::every(std::chrono::milliseconds interval,
                                                  std::function<void()> action) {
    return std::make_unique<Timer>(interval, true, std::move(action));
}

} // namespace mossbit
