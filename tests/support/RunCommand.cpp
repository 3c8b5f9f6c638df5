#include "support/RunCommand.h"

#include <sys/wait.h>

#include <cstdio>

namespace orbisk::test {

CommandResult runCommand(const std::string& commandLine) {
    CommandResult result;
    std::FILE* pipe = popen(("{ " + commandLine + "\n} 2>&1").c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe))
        result.output.append(buffer, count);
    const int status = pclose(pipe);
    if (WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    return result;
}

std::string shellQuoted(const std::string& text) {
    std::string word = "'";
    for (const char character : text)
        word += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return word + "'";
}

} // namespace orbisk::test
