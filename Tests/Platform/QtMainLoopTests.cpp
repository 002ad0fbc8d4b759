#include "Platform/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QEventLoop>

#include <memory>

namespace mossbit {
namespace {

using namespace std::chrono_literals;

TEST(QtMainLoop, AnActionMayEndItsOwnTask) {
    QtMainLoop loop;
    QEventLoop events;
    int calls = 0;
    std::unique_ptr<MainLoop::Task> once, repeated;
    repeated = loop.every(1ms, [&, alive = std::make_shared<int>(3)] {
        if (++calls < *alive)
            return;
        repeated.reset();
        once = loop.after(20ms, [&] { events.quit(); });
        EXPECT_EQ(*alive, 3) << "the action is still whole";
    });
    events.exec();
    EXPECT_EQ(calls, 3);
}

} // namespace
} // namespace mossbit
