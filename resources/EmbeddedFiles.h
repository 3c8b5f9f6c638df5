#pragma once

#include <string_view>

namespace orbisk {

/// The bytes of a picture compiled into the program, by its bare file name: any SVG of
/// resources/icons or resources/artwork, such as "icon_open32.svg" or "banner.svg", and each of
/// them painted in its own size, such as "icon_open32-32x32.png".
///
/// The view stays valid for the whole run, and a NUL follows its last byte, so that its data() may
/// be handed to functions that want a C string. Returns an empty view when there is no such file.
std::string_view embeddedFile(std::string_view name);

} // namespace orbisk
