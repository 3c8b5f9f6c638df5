#pragma once

#include "settings/SettingsFile.h"

#include <json/json.h>

#include <string>

namespace orbisk::test {

inline constexpr DisplaySize testDisplay{1920, 1080};

/// Paths stand in the file as the program holds them.
PathEncoding plainEncoding();

/// Loads with `plainEncoding` and `testDisplay`; fails the test on an error.
AppSettings loaded();

/// Writes `text` as the settings file and loads it.
AppSettings loadedFrom(const std::string& text);

/// Saves with `plainEncoding`.
void save(const AppSettings& settings);

/// What stands in the settings file, read by a strict reader; null and a failure if it is no JSON.
Json::Value fileContents();

/// A settings file with this `project` member.
std::string fileWith(const std::string& project);

/// Settings with another value in each field.
AppSettings unusualSettings();

/// All fields as one text, every digit of them.
std::string describe(const AppSettings& settings);

} // namespace orbisk::test
