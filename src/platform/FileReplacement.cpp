#include "platform/FileReplacement.h"

#include <fstream>
#include <system_error>

namespace orbisk {

namespace fs = std::filesystem;

namespace {

/// The file that writing to `path` would change: a link stands for what it points to.
fs::path targetOf(const fs::path& path) {
    std::error_code error;
    const fs::path target = fs::canonical(path, error);
    return error ? path : target;
}

bool mayBeWritten(const fs::path& target) {
    std::error_code error;
    if (!fs::exists(target, error))
        return true;
    return std::ofstream(target, std::ios::binary | std::ios::app).is_open();
}

bool writeWhole(const fs::path& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return file.good();
}

} // namespace

bool replaceFile(const fs::path& path, std::string_view bytes) {
    const fs::path target = targetOf(path);
    if (!mayBeWritten(target))
        return false;
    fs::path beside = target;
    beside += ".new";
    std::error_code error;
    if (writeWhole(beside, bytes)) {
        fs::rename(beside, target, error);
        if (!error)
            return true;
    }
    fs::remove(beside, error);
    return false;
}

} // namespace orbisk
