#include "Tests/Support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <system_error>
#include <utility>

extern char** environ;

namespace mossbit {

Process::Process(const std::vector<std::string>& command, const std::filesystem::path& output) {
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, output.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const int error =
        posix_spawnp(&m_id, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), command.front());
}

Process::~Process() {
    kill();
}

bool Process::isRunning() {
    siginfo_t end{};
    return m_id != 0 &&
           waitid(P_PID, static_cast<id_t>(m_id), &end, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           end.si_pid == 0;
}

void Process::kill(int signal) {
    if (m_id != 0)
        ::kill(m_id, signal);
    wait();
}

int Process::wait() {
    int status = 0;
    if (m_id != 0 && waitpid(std::exchange(m_id, 0), &status, 0) > 0)
        m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return m_status;
}

} // namespace mossbit
