#include "readers/WholeFile.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace orbisk {

std::optional<std::string> readWholeFile(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return std::nullopt;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::string bytes(size, '\0');
    if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
        return std::nullopt;
    return bytes;
}

} // namespace orbisk
