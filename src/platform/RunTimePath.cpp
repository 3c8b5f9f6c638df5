#include "platform/RunTimePath.h"

#include <filesystem>

namespace orbisk {

std::string runTimePath(std::initializer_list<const char*> parts) {
    std::filesystem::path path;
    for (const char* part : parts)
        path /= part;
    return path.make_preferred().string();
}

} // namespace orbisk
