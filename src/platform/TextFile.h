#pragma once

#include <filesystem>
#include <string>

namespace orbisk {

/// Makes `text`, whose lines end in "\n", the contents of a text file as this system writes them,
/// in one step as `replaceFile` does.
/// @return whether the new contents stand there.
bool replaceTextFile(const std::filesystem::path& path, const std::string& text);

} // namespace orbisk
