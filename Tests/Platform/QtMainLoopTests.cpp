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
    std::unique_ptr<MainLoop::Task> task;
    task = loop.after(1ms, [&, alive = std::make_shared<int>(3)] {
        ++calls;
        task = loop.after(20ms, [&] { events.quit(); });
        EXPECT_EQ(*alive, 3) << "the action is still whole";
    });
    events.exec();
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace mossbit
