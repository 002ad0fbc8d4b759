#include "UI/Theme.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Also when the build only asks which tests there are.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    mossbit::applyTheme(application);
    return RUN_ALL_TESTS();
}
