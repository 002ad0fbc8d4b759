#include "Services/ProjectStore.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

// The real program in a real window, worked with the mouse and the keyboard.
namespace mossbit {
namespace {

/// Of the menu bar above the window's content.
constexpr int barHeight = 19;

TEST(Window, FirstStart) {
    Desktop desktop;
    const auto program = desktop.start();
    ASSERT_TRUE(desktop.waitForTitle("Untitled"));
    auto window = desktop.activeWindow();
    ASSERT_TRUE(window);
    EXPECT_EQ(window->width, 1100);
    EXPECT_EQ(window->height, 700 + barHeight);
    desktop.resize(100, 100);
    EXPECT_TRUE(waitUntil([&] {
        window = desktop.activeWindow();
        return window && window->width < 1100;
    }));
    EXPECT_EQ(window->width, 900);
    EXPECT_EQ(window->height, 600 + barHeight);
    desktop.closeWindow();
    EXPECT_EQ(program->wait(), 0);
    EXPECT_EQ(ProjectStore::read(desktop.home() / "Mossbit/Autosave.mossbit"), Project());
}

} // namespace
} // namespace mossbit
