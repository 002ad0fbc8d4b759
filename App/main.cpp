#include "App/MossbitApp.h"
#include "UI/Theme.h"

#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

/// Qt has no other answer to a display that it cannot open than to abort, with several lines about
/// its plugins.
void endWithoutADisplay(QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type != QtFatalMsg)
        return;
    std::fputs("mossbit: No display can be reached\n", stderr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

int main(int argc, char** argv) {
    // Standard error may be a pipe that nobody reads any more.
    std::signal(SIGPIPE, SIG_IGN);
    const QtMessageHandler usualHandler = qInstallMessageHandler(endWithoutADisplay);
    QApplication application(argc, argv);
    qInstallMessageHandler(usualHandler);
    // No display name: the desktop would append it to the window's title.
    QApplication::setApplicationName(QStringLiteral("Mossbit"));
    QApplication::setApplicationVersion(QStringLiteral(MOSSBIT_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.quillark.mossbit"));
    // Not by name from the icon theme, whose index takes long to read. Where Mossbit is installed,
    // the desktop itself finds the icon in every size by the desktop file's name.
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/64.png")));
    mossbit::applyTheme(application);
    mossbit::MossbitApp mossbit;
    // Qt's own list of arguments loses file names that are not UTF-8.
    return mossbit.run({argv + 1, argv + argc});
}
