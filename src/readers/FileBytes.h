#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orbisk {

/// The bytes of a file in memory. Whoever has them may let go of them before what was made of them.
class FileBytes {
public:
    /// Reads the plain file of this name (as the library spells names). From any thread.
    /// @return nothing where there is no such file, where it is not a plain one (a folder, a pipe,
    /// a device that never ends), or where it can't be read whole.
    static std::optional<FileBytes> read(const std::string& path);

    /// Copies bytes that come from elsewhere.
    explicit FileBytes(std::string_view bytes);

    /// Valid until this object goes or is moved from.
    std::string_view view() const { return {m_bytes.get(), m_size}; }

private:
    explicit FileBytes(std::size_t size);

    // Not a string or a vector: they would write every byte once before the file does.
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size;
};

} // namespace orbisk
