#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// The bytes of the file `path` (local encoding). From any thread.
/// @return nothing where there is no such file, where it is not a plain one (a folder, a pipe, a
/// device that never ends), or where it can't be read whole.
std::optional<std::string> readWholeFile(const std::string& path);

} // namespace orbisk
