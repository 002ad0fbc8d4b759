#include "Tests/Support/ScratchFolder.h"
#include "UI/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>

/// Qt wants its application object before the first widget and on the main thread.
int main(int argc, char** argv) {
    // Also when the build only asks which tests there are.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // What Qt remembers of its dialogs is not to change what it remembers of the user's.
    const mossbit::ScratchFolder home;
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, home.path().c_str());
    QApplication application(argc, argv);
    mossbit::applyTheme(application);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
