#include "App/EndSignals.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace mossbit {

namespace {

constexpr std::array endSignals = {SIGTERM, SIGINT, SIGHUP};

/// The pipe's read end and write end. They are global because a signal handler has no parameter for
/// them, and a pipe because a handler may do little more than write.
std::array<int, 2> pipeEnds = {-1, -1};

extern "C" void handleEndSignal(int) {
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], "", 1);
    errno = error;
}

/// A signal that is ignored from the start stays ignored, as `nohup` wants it.
void takeUnlessIgnored(int signal) {
    if (std::signal(signal, handleEndSignal) == SIG_IGN)
        std::signal(signal, SIG_IGN);
}

} // namespace

EndSignals::EndSignals() {
    if (pipe(pipeEnds.data()) != 0)
        return;
    for (const int end : pipeEnds) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    auto* const notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (read(pipeEnds[0], &byte, 1) == 1) {
        }
        Q_EMIT received();
    });
    for (const int signal : endSignals)
        takeUnlessIgnored(signal);
}

EndSignals::~EndSignals() {
    for (const int signal : endSignals)
        std::signal(signal, SIG_DFL);
    for (int& end : pipeEnds) {
        if (end >= 0)
            close(end);
        end = -1;
    }
}

} // namespace mossbit
