#include "Tests/Support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <system_error>

extern char** environ;

namespace mossbit {

namespace {

int meaning(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

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
    int status = 0;
    if (m_id != 0 && waitpid(m_id, &status, WNOHANG) == m_id) {
        m_id = 0;
        m_status = meaning(status);
    }
    return m_id != 0;
}

void Process::kill(int signal) {
    if (!isRunning())
        return;
    ::kill(m_id, signal);
    wait();
}

int Process::wait() {
    int status = 0;
    if (m_id != 0 && waitpid(m_id, &status, 0) == m_id)
        m_status = meaning(status);
    m_id = 0;
    return m_status;
}

} // namespace mossbit
