#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace orbisk::bench {

/// A program that is measured from outside; it ends with this object at the latest.
class ChildProcess {
public:
    /// Starts a program with its arguments in the working directory `folder`. What it prints is
    /// kept, what it warns of is dropped.
    ChildProcess(const std::vector<std::string>& arguments, const std::filesystem::path& folder);
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits for its end. @return what it printed.
    std::string output();

private:
    pid_t m_pid = -1;
    int m_printed = -1;
};

} // namespace orbisk::bench
