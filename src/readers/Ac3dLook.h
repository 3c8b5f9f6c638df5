#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of AC3D files can be let at the file `path`. It believes how
/// many vertices, corners and parts the file announces, goes on for all of them behind the file's
/// end, and calls itself for each part within a part and each corner that meets others at a vertex.
/// @return nothing, or why not.
std::optional<std::string> ac3dRefusal(const std::string& path);

} // namespace orbisk
