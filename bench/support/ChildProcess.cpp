#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace orbisk::bench {

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& folder) {
    std::array<int, 2> pipeEnds{};
    if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    m_printed = pipeEnds[0];
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    const int error =
        posix_spawn(&m_pid, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    if (error != 0) {
        close(m_printed);
        throw std::runtime_error("cannot start " + arguments.front());
    }
}

ChildProcess::~ChildProcess() {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    close(m_printed);
}

std::string ChildProcess::output() {
    std::string text;
    std::array<char, 256> buffer{};
    for (ssize_t count = 0; (count = read(m_printed, buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    return text;
}

} // namespace orbisk::bench
