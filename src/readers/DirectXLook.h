#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of DirectX text files can be let at the file `path`. It
/// believes how many numbers a line has, follows indices of vertices, normals and materials, calls
/// itself for each section within a section, and compares every vertex with every corner where the
/// file has no normals.
/// @return nothing, or why not.
std::optional<std::string> directXRefusal(const std::string& path);

} // namespace orbisk
