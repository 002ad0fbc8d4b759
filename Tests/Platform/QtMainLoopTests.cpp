#include "Platform/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QEventLoop>

#include <memory>

namespace mossbit {
namespace {

using namespace std::chrono_literals;
using TaskHandle = std::unique_ptr<MainLoop::Task>;

TEST(QtMainLoop, RepeatsUntilTheActionDropsItsHandle) {
    QtMainLoop loop;
    QEventLoop events;
    int calls = 0;
    TaskHandle end;
    TaskHandle task = loop.every(std::chrono::duration<double>(1.0 / 500), [&] {
        if (++calls < 5)
            return;
        task.reset();
        end = loop.after(10ms, [&] { events.quit(); });
    });
    events.exec();
    EXPECT_EQ(calls, 5);
}

/// Steps of 16 ms instead of 1/60 s would come earlier and earlier.
TEST(QtMainLoop, StepsDoNotDrift) {
    QtMainLoop loop;
    QEventLoop events;
    int calls = 0;
    const auto start = std::chrono::steady_clock::now();
    const TaskHandle task = loop.every(std::chrono::duration<double>(1.0 / 60), [&] {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        // Late by any amount on a busy machine, but never early.
        EXPECT_GT(passed.count(), ++calls / 60.0 - 0.002);
        if (calls == 30)
            events.quit();
    });
    events.exec();
}

} // namespace
} // namespace mossbit
