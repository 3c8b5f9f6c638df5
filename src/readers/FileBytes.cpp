#include "readers/FileBytes.h"

#include <osgDB/FileUtils>
#include <osgDB/fstream>

#include <algorithm>

namespace orbisk {

FileBytes::FileBytes(std::size_t size) : m_bytes(new char[size]), m_size(size) {}

FileBytes::FileBytes(std::string_view bytes) : FileBytes(bytes.size()) {
    std::copy(bytes.begin(), bytes.end(), m_bytes.get());
}

std::optional<FileBytes> FileBytes::read(const std::string& path) {
    // A folder or a pipe has no size to go by.
    if (osgDB::fileType(path) != osgDB::REGULAR_FILE)
        return std::nullopt;
    osgDB::ifstream stream(path.c_str(), std::ios::binary | std::ios::ate);
    const std::streamoff end = stream.tellg();
    if (!stream || end < 0)
        return std::nullopt;
    FileBytes file(static_cast<std::size_t>(end));
    stream.seekg(0);
    if (!stream.read(file.m_bytes.get(), end))
        return std::nullopt;
    return file;
}

} // namespace orbisk
