#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of its native format in XML (osgx) can be let at the file
/// `path`: it calls itself for each element within an element.
/// @return nothing, or why not.
std::optional<std::string> xmlSceneRefusal(const std::string& path);

} // namespace orbisk
