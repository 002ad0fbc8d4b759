#include <gtest/gtest.h>

#include <QApplication>

/// Qt wants its application object before the first widget and on the main thread.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", qEnvironmentVariableIsSet("QT_QPA_PLATFORM")
                                   ? qgetenv("QT_QPA_PLATFORM")
                                   : QByteArray("offscreen"));
    const QApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
