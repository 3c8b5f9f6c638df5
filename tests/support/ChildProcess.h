#pragma once

#include "support/TemporaryFolder.h"

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace orbisk::test {

/// Environment variables by name.
using Environment = std::map<std::string, std::string>;

/// A program that runs beside the test and ends with this object at the latest.
class ChildProcess {
public:
    /// Starts a program with its arguments; `environment` is added to the test's own.
    explicit ChildProcess(const std::vector<std::string>& arguments,
                          const Environment& environment = {});
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool isRunning();

    /// Waits for its end. @return its exit code; -1 after a signal, or when the time is over.
    int wait(double seconds = 60.0);

    /// What it has written so far to its standard output and to its standard error.
    std::string output() const;
    std::string errorOutput() const;

private:
    TemporaryFolder m_files;
    pid_t m_pid = -1;
    bool m_ended = false;
    int m_exitCode = -1;
};

} // namespace orbisk::test
