#include "support/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace orbisk::bench {

namespace {

/// Turns this process, a fresh copy of the benchmark, into the program.
[[noreturn]] void become(const std::vector<char*>& words, const char* folder, int output) {
    // Should the benchmark itself be ended, this one goes with it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(nothing, STDERR_FILENO);
    if (chdir(folder) == 0)
        execv(words.front(), words.data());
    _exit(EXIT_FAILURE);
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& folder) {
    std::array<int, 2> pipeEnds{};
    if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    std::vector<std::string> words = arguments;
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    m_printed = pipeEnds[0];
    m_pid = fork();
    if (m_pid == 0)
        become(pointers, folder.c_str(), pipeEnds[1]);
    close(pipeEnds[1]);
    if (m_pid < 0) {
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
