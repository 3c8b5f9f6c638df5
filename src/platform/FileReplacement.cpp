#include "platform/FileReplacement.h"

#include <fstream>
#include <system_error>

namespace orbisk {

namespace fs = std::filesystem;

namespace {

constexpr int longestLinkChain = 40;

/// The file that writing to `path` would change: a link stands for what it points to, be that there
/// already or not.
fs::path targetOf(fs::path path) {
    std::error_code error;
    for (int links = 0; links < longestLinkChain && fs::is_symlink(path, error); ++links) {
        const fs::path next = fs::read_symlink(path, error);
        if (error)
            break;
        path = next.is_absolute() ? next : path.parent_path() / next;
    }
    return path;
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
        const fs::file_status former = fs::status(target, error);
        if (fs::exists(former))
            fs::permissions(beside, former.permissions(), error);
        fs::rename(beside, target, error);
        if (!error)
            return true;
    }
    fs::remove(beside, error);
    return false;
}

} // namespace orbisk
