#pragma once

#include <string>

namespace orbisk::test {

struct CommandResult {
    int status = -1;    ///< exit status; -1 when the command could not be started or was killed
    std::string output; ///< of both standard streams
};

/// Runs a shell command line and waits for its end.
CommandResult runCommand(const std::string& commandLine);

/// `text` as one word of a shell command line.
std::string shellQuoted(const std::string& text);

} // namespace orbisk::test
