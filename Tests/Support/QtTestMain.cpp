#include <gtest/gtest.h>

#include <QApplication>

/// Qt wants its application object before the first widget and on the main thread.
int main(int argc, char** argv) {
    // Also when the build only asks which tests there are.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
