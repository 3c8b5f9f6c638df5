#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of its old text format (osg) can be let at the file `path`.
/// The reader makes room for as many elements as a list announces, and waits for them for ever.
/// @return nothing, or why not: a list announces more elements than the file has bytes left,
/// brackets are nested deeper than a reader that calls itself can bear, a primitive set has
/// something else than numbers, a height field another number of heights than it says, or a shape
/// absurd detail.
std::optional<std::string> oldTextRefusal(const std::string& path);

} // namespace orbisk
