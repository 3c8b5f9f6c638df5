#include "support/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace orbisk::test {

namespace {

constexpr auto pause = std::chrono::milliseconds(10);
const char* outputName = "output";
const char* errorName = "errors";

std::vector<std::string> environmentWith(const Environment& added) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (added.count(text.substr(0, text.find('='))) == 0)
            result.push_back(text);
    }
    for (const auto& [name, value] : added)
        result.push_back(name + "=" + value);
    return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const Environment& environment) {
    constexpr int writeFlags = O_WRONLY | O_CREAT | O_TRUNC;
    constexpr mode_t ownerOnly = 0600;
    const std::string output = m_files.path() / outputName;
    const std::string errors = m_files.path() / errorName;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), writeFlags,
                                     ownerOnly);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), writeFlags,
                                     ownerOnly);
    std::vector<std::string> words = arguments;
    std::vector<std::string> variables = environmentWith(environment);
    const int error = posix_spawnp(&m_pid, words.front().c_str(), &actions, nullptr,
                                   pointersTo(words).data(), pointersTo(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << "cannot start " << arguments.front();
    m_ended = error != 0;
}

ChildProcess::~ChildProcess() {
    if (!isRunning())
        return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

bool ChildProcess::isRunning() {
    int status = 0;
    if (!m_ended && waitpid(m_pid, &status, WNOHANG) == m_pid) {
        m_ended = true;
        m_exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    return !m_ended;
}

int ChildProcess::wait(double seconds) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (isRunning() && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(pause);
    return m_exitCode;
}

std::string ChildProcess::output() const {
    return readFile(m_files.path() / outputName);
}

std::string ChildProcess::errorOutput() const {
    return readFile(m_files.path() / errorName);
}

} // namespace orbisk::test
