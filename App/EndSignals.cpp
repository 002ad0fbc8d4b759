#include "App/EndSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <utility>

namespace mossbit {

namespace {

/// The write end of a pipe to the main loop. It is global because a signal handler has no parameter
/// for it, and a pipe because a handler may do little more than write.
int writeEnd = -1;

extern "C" void handleEndSignal(int) {
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(writeEnd, "", 1);
    errno = error;
}

} // namespace

void atEndSignal(std::function<void()> action) {
    int ends[2];
    if (pipe(ends) != 0)
        return;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    writeEnd = ends[1];
    fcntl(writeEnd, F_SETFL, O_NONBLOCK);
    auto* const notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, std::move(action),
                     Qt::SingleShotConnection);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        // One that is ignored from the start stays ignored, as `nohup` wants it.
        if (std::signal(signal, handleEndSignal) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
}

} // namespace mossbit
