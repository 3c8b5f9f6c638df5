#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of MD2 files can be let at the file `path`: it follows
/// whatever places and counts the head of the file has.
/// @return nothing, or why not.
std::optional<std::string> md2Refusal(const std::string& path);

/// Looks whether the library's readers of LightWave objects, new and old, can be let at the file
/// `path`: they believe the sizes of chunks, and the old one indices of points and surfaces.
/// @return nothing, or why not.
std::optional<std::string> lightwaveRefusal(const std::string& path);

} // namespace orbisk
