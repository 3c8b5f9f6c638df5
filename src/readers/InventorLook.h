#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of VRML and Inventor files can be let at the file `path`.
/// What it builds on believes the indices of faces and lines, and files that include each other
/// make it call itself for ever.
///
/// Looks at text only, and knows what is written out: what a prototype or a route puts together it
/// cannot see. What it does not understand it lets through.
/// @return nothing, or why not.
std::optional<std::string> inventorRefusal(const std::string& path);

} // namespace orbisk
