#include "damage/LookOutcome.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace orbisk::test {

namespace {

std::string signalName(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGABRT:
        return "SIGABRT";
    case SIGFPE:
        return "SIGFPE";
    case SIGBUS:
        return "SIGBUS";
    case SIGALRM:
        return "time";
    case SIGXFSZ:
        return "messages";
    default:
        return "signal " + std::to_string(signal);
    }
}

} // namespace

std::string LookOutcome::text() const {
    if (signal != 0)
        return signalName(signal);
    if (exitCode == lookDone)
        return "looked at";
    return exitCode == lookRefused ? "refused" : "exit " + std::to_string(exitCode);
}

LookOutcome lookAt(const std::string& program, const std::string& file,
                   const std::string& messages) {
    constexpr int writeFlags = O_WRONLY | O_CREAT | O_TRUNC;
    constexpr mode_t ownerOnly = 0600;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, messages.c_str(), writeFlags,
                                     ownerOnly);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    std::string programText = program;
    std::string fileText = file;
    char* arguments[] = {programText.data(), fileText.data(), nullptr};
    pid_t child = -1;
    const int error = posix_spawn(&child, program.c_str(), &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    LookOutcome outcome;
    int status = 0;
    if (error != 0 || waitpid(child, &status, 0) != child)
        return outcome;
    if (WIFSIGNALED(status))
        outcome.signal = WTERMSIG(status);
    else
        outcome.exitCode = WEXITSTATUS(status);
    return outcome;
}

} // namespace orbisk::test
