#include "measure/NumberedTriangles.h"

#include <algorithm>

namespace orbisk {

void NumberedTriangles::takeSetOf(std::uint32_t number) {
    // Of sets that begin with the same number only the last can have triangles.
    const auto next = std::upper_bound(m_firstNumbers.begin(), m_firstNumbers.end(), number);
    const auto set = static_cast<std::size_t>(next - m_firstNumbers.begin()) - 1;
    m_set.emplace(*m_sets[set]);
    m_first = m_firstNumbers[set];
    m_count = m_set->count();
}

} // namespace orbisk
