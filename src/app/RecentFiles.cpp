#include "app/RecentFiles.h"

#include <algorithm>

namespace orbisk {

bool addRecentFile(const std::string& path, std::vector<std::string>& recent) {
    if (path.empty())
        return false;
    const auto known = std::find(recent.begin(), recent.end(), path);
    if (known != recent.end())
        recent.erase(known);
    if (recent.size() >= maxRecentFiles)
        recent.resize(maxRecentFiles - 1);
    recent.insert(recent.begin(), path);
    return true;
}

void removeRecentFile(std::size_t index, std::vector<std::string>& recent) {
    if (index < recent.size())
        recent.erase(recent.begin() + static_cast<std::ptrdiff_t>(index));
}

} // namespace orbisk
