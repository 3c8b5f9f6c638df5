#include "readers/SeparateLines.h"

#include <cstddef>
#include <cstring>

namespace orbisk {

bool SeparateLines::next() {
    if (m_rest.empty())
        return false;
    const auto* found = static_cast<const char*>(std::memchr(m_rest.data(), '\n', m_rest.size()));
    const std::size_t length =
        found ? static_cast<std::size_t>(found - m_rest.data()) : m_rest.size();
    m_line = m_rest.substr(0, length);
    m_rest.remove_prefix(found ? length + 1 : length);
    if (!m_line.empty() && m_line.back() == '\r')
        m_line.remove_suffix(1);
    return true;
}

} // namespace orbisk
