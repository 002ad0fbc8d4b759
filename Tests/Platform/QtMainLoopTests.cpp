#include "Platform/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QEventLoop>

#include <memory>

namespace mossbit {
namespace {

using namespace std::chrono_literals;
using TaskHandle = std::unique_ptr<MainLoop::Task>;

/// Steps of 16 ms instead of 1/60 s would come earlier and earlier.
TEST(QtMainLoop, StepsDoNotDriftAndEndWithTheirHandle) {
    QtMainLoop loop;
    QEventLoop events;
    int calls = 0;
    const auto start = std::chrono::steady_clock::now();
    TaskHandle end;
    TaskHandle task = loop.every(std::chrono::duration<double>(1.0 / 60), [&] {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        // Late by any amount on a busy machine, but never early.
        EXPECT_GT(passed.count(), ++calls / 60.0 - 0.002);
        if (calls < 30)
            return;
        task.reset();
        end = loop.after(50ms, [&] { events.quit(); });
    });
    events.exec();
    EXPECT_EQ(calls, 30);
}

} // namespace
} // namespace mossbit
