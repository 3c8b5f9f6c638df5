#pragma once

#include <filesystem>
#include <string_view>

namespace orbisk {

/// Gives a file new contents in one step: they are written into another file beside it, which then
/// takes its place, so that a full disk, a failure or a kill leaves the old file whole. A link
/// stands for what it points to. What was not committed goes with this object.
class FileReplacement {
public:
    /// @param path of the file; it may exist or not.
    explicit FileReplacement(const std::filesystem::path& path);
    ~FileReplacement();

    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Where to write the new contents: a name that is free, in the same folder and of the same
    /// extension.
    const std::filesystem::path& temporary() const { return m_temporary; }

    /// Puts what was written in place, with the rights of the file that stood there. Fails where
    /// nothing was written and where a file stands there write-protected.
    /// @return whether the new contents stand there.
    bool commit();

private:
    std::filesystem::path m_target;
    std::filesystem::path m_temporary;
};

/// Makes `bytes` the contents of the file `path` in one step. A file that stands there
/// write-protected stays as it is.
/// @return whether the new contents stand there.
bool replaceFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace orbisk
