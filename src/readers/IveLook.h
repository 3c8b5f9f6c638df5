#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// What the library's reader of IVE files would read of a file: its bytes, unpacked where they are
/// packed.
/// @return nothing where they cannot be unpacked, or to far more than any model.
std::optional<std::string> unpackedIve(std::string_view bytes);

/// Whether the bytes of an IVE file are packed.
bool isPackedIve(std::string_view bytes);

/// Looks whether the library's reader of IVE files can be let at these bytes, which are not
/// packed. It takes all counts in them as they come: it goes on behind their end, sets positions
/// and names that are not there, and lets a reader of any kind at an image that is part of the
/// file.
///
/// The look goes the way of the reader through all records; what the reader would read otherwise
/// than the look does is refused, and so are records that nothing shows (volumes).
/// @param isImageName whether an image of this name may be read from the file.
/// @return nothing, or why not.
std::optional<std::string> iveRefusal(std::string_view bytes,
                                      bool (*isImageName)(const std::string& name));

} // namespace orbisk
