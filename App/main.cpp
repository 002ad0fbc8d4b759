#include "App/MossbitApp.h"
#include "UI/Theme.h"

#include <QApplication>
#include <QIcon>

#include <csignal>

int main(int argc, char** argv) {
    // Standard error may be a pipe that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    QApplication application(argc, argv);
    // No display name: the desktop would append it to the window's title.
    QApplication::setApplicationName(QStringLiteral("Mossbit"));
    QApplication::setApplicationVersion(QStringLiteral(MOSSBIT_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.quillark.mossbit"));
    // The theme has it where Mossbit is installed; the program's own serves where it is not.
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("com.quillark.mossbit"),
                                                 QIcon(QStringLiteral(":/256.png"))));
    mossbit::applyTheme(application);
    mossbit::MossbitApp mossbit;
    // Not the application's own list, which has no place for names that are no UTF-8.
    return mossbit.run({argv + 1, argv + argc});
}
