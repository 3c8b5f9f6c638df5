#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orbisk {

inline constexpr std::size_t maxRecentFiles = 10;

/// Puts `path` at the front of `recent`, without a duplicate (exact, case-sensitive comparison);
/// the oldest entry goes when the list is full. An empty path changes nothing.
/// @return whether the list was touched.
bool addRecentFile(const std::string& path, std::vector<std::string>& recent);

/// Removes entry `index`; an index outside the list changes nothing.
void removeRecentFile(std::size_t index, std::vector<std::string>& recent);

} // namespace orbisk
