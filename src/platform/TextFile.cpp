#include "platform/TextFile.h"

#include "platform/FileReplacement.h"

#include <algorithm>

namespace orbisk {

#ifdef _WIN32

bool replaceTextFile(const std::filesystem::path& path, const std::string& text) {
    std::string bytes;
    bytes.reserve(text.size() +
                  static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
    for (const char character : text) {
        if (character == '\n')
            bytes += '\r';
        bytes += character;
    }
    return replaceFile(path, bytes);
}

#else

bool replaceTextFile(const std::filesystem::path& path, const std::string& text) {
    return replaceFile(path, text);
}

#endif

} // namespace orbisk
