#include "platform/FileReplacement.h"

#include <fstream>
#include <string>
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

/// A name beside `target` that nothing has yet.
fs::path freeNameBeside(const fs::path& target) {
    std::error_code error;
    fs::path candidate;
    int number = 0;
    do {
        candidate = target.parent_path() / target.stem();
        candidate += number == 0 ? ".new" : ".new" + std::to_string(number);
        candidate += target.extension();
        ++number;
    } while (fs::exists(fs::symlink_status(candidate, error)));
    return candidate;
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

FileReplacement::FileReplacement(const fs::path& path)
    : m_target(targetOf(path)), m_temporary(freeNameBeside(m_target)) {}

FileReplacement::~FileReplacement() {
    std::error_code error;
    fs::remove(m_temporary, error);
}

bool FileReplacement::commit() {
    std::error_code error;
    if (!fs::is_regular_file(m_temporary, error) || !mayBeWritten(m_target))
        return false;
    const fs::file_status former = fs::status(m_target, error);
    if (fs::exists(former))
        fs::permissions(m_temporary, former.permissions(), error);
    fs::rename(m_temporary, m_target, error);
    return !error;
}

bool replaceFile(const fs::path& path, std::string_view bytes) {
    FileReplacement replacement(path);
    return writeWhole(replacement.temporary(), bytes) && replacement.commit();
}

} // namespace orbisk
