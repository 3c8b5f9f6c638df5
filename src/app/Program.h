#pragma once

namespace orbisk {

/// Does what the command line asks for: shows the main window, takes a picture, or answers with a
/// text. Main thread. @return the process's exit status.
int runProgram(int argc, char** argv);

} // namespace orbisk
