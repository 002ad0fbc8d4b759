#include "Platform/QtMainLoop.h"

#include <QTimer>

#include <utility>

namespace mossbit {

namespace {

class Timer final : public MainLoop::Task {
public:
    Timer(std::chrono::milliseconds delay, std::function<void()> action) {
        // Coarse ones come up to 5 % late.
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setSingleShot(true);
        // The connection outlives the timer until the action has returned.
        QObject::connect(&m_timer, &QTimer::timeout, std::move(action));
        m_timer.start(delay);
    }

private:
    QTimer m_timer;
};

} // namespace

std::unique_ptr<MainLoop::Task> QtMainLoop::after(std::chrono::milliseconds delay,
                                                  std::function<void()> action) {
    return std::make_unique<Timer>(delay, std::move(action));
}

} // namespace mossbit
