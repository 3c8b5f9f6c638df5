#pragma once

#include "app/WindowPlacement.h"
#include "settings/AppSettings.h"

#include <functional>
#include <optional>
#include <string>

namespace orbisk {

/// Name of the settings file, relative to the working directory.
inline constexpr const char* settingsFileName = "datafile.json";

/// How paths stand in the file: in the local multibyte encoding, while the program holds UTF-8.
/// Each function takes and gives a whole path; a path it cannot convert becomes empty.
struct PathEncoding {
    std::function<std::string(const std::string&)> toFile;
    std::function<std::string(const std::string&)> fromFile;
};

/// Where and why a settings file could not be understood; line and column count from 1.
struct SettingsError {
    int line = 0;
    int column = 0;
    std::string message;
};

/// Reads the settings file of the working directory into `settings`. Without a file the defaults
/// are set, the rectangle being that of the whole display. A missing or mistyped member reads as
/// zero, false or an empty list. `panes` are left as they are.
/// @return nothing, or the error of a file that is not JSON; `settings` then keep their values.
std::optional<SettingsError> loadSettings(AppSettings& settings, const DisplaySize& display,
                                          const PathEncoding& encoding);

/// Writes `settings` to the settings file of the working directory, in one step: whatever goes
/// wrong (and none of it is reported), either the old file or the whole new one stands there.
void saveSettings(const AppSettings& settings, const PathEncoding& encoding);

} // namespace orbisk
