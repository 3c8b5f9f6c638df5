#pragma once

#include "view/DisplayMode.h"

#include <optional>
#include <string>
#include <vector>

namespace orbisk {

/// A picture that is taken without opening a window.
struct ScreenshotRequest {
    std::string file;
    int width = 1280; ///< pixels
    int height = 800; ///< pixels
    DisplayMode mode = DisplayMode::AsLoaded;
};

/// What the command line asks for.
struct CommandLine {
    bool help = false;
    bool version = false;
    std::optional<std::string> model; ///< a path in the local encoding
    std::optional<ScreenshotRequest> screenshot;
    std::optional<std::string> error; ///< one line; the rest is then not to be used
};

/// Reads the arguments that follow the program's name.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// The text of `--help`.
std::string commandLineHelp();

/// The line of `--version`.
std::string versionLine();

} // namespace orbisk
