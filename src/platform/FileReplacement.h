#pragma once

#include <filesystem>
#include <string_view>

namespace orbisk {

/// Makes `bytes` the contents of the file `path` in one step: they are written beside it and then
/// renamed over it, so that a full disk or a kill leaves the old file whole. A file that stands
/// there write-protected stays as it is.
/// @return whether the new contents stand there.
bool replaceFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace orbisk
