#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of VRML and Inventor files can be let at the file `path`.
/// What it builds on believes the indices of faces and lines, and how many points they take; files
/// that include each other, and prototypes that contain themselves, make it call itself for ever.
///
/// Looks at text only, packed or not, and knows what is written out: a prototype that leaves points
/// or indices to whoever uses it is refused. What it does not understand it lets through.
/// @return nothing, or why not.
std::optional<std::string> inventorRefusal(const std::string& path);

} // namespace orbisk
