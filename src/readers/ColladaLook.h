#pragma once

#include <optional>
#include <string>

namespace orbisk {

/// Looks whether the library's reader of COLLADA files can be let at the file `path`: a node that
/// holds an instance of itself, directly or through others, makes it call itself for ever, and it
/// takes as many numbers from a source as an accessor announces.
/// @return nothing, or why not. A document that is no XML, or one that brings a type definition, is
/// refused as well.
std::optional<std::string> colladaRefusal(const std::string& path);

} // namespace orbisk
