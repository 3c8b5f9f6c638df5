#pragma once

#include <osg/Endian>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace orbisk {

/// In which order a number's bytes stand in a file.
enum class ByteOrder { LittleEndian, BigEndian };

/// Whether numbers of this order have to be turned round on this machine.
inline bool isForeign(ByteOrder order) {
    const bool hostIsBig = osg::getCpuByteOrder() == osg::BigEndian;
    return (order == ByteOrder::BigEndian) != hostIsBig;
}

/// The number whose bytes stand at `at`, aligned or not, all of them within memory.
template <class Number>
Number loadNumber(const char* at, bool foreign) {
    static_assert(std::is_arithmetic_v<Number>);
    Number number;
    char bytes[sizeof(Number)];
    std::memcpy(bytes, at, sizeof(Number));
    if (foreign)
        std::reverse(bytes, bytes + sizeof(Number));
    std::memcpy(&number, bytes, sizeof(Number));
    return number;
}

/// Goes through bytes in little-endian order and never beyond their end: what isn't there reads as
/// zero, and `failed` tells so from then on.
class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    std::size_t position() const { return m_position; }
    std::size_t remaining() const { return m_bytes.size() - m_position; }

    /// Whether anything was asked for that isn't there, or `fail` was called.
    bool failed() const { return m_failed; }

    /// Notes that what was read makes no sense.
    void fail() { m_failed = true; }

    template <class Number>
    Number read() {
        if (remaining() < sizeof(Number)) {
            m_position = m_bytes.size();
            m_failed = true;
            return Number();
        }
        const char* at = m_bytes.data() + m_position;
        m_position += sizeof(Number);
        return loadNumber<Number>(at, isForeign(ByteOrder::LittleEndian));
    }

    /// The text up to the next zero byte, which is passed over. It fails, with an empty text, where
    /// there is none within `limit` bytes, itself included.
    std::string_view readText(std::size_t limit) {
        const std::string_view ahead = m_bytes.substr(m_position, limit);
        const std::size_t length = ahead.find('\0');
        if (length == std::string_view::npos) {
            m_failed = true;
            return {};
        }
        m_position += length + 1;
        return ahead.substr(0, length);
    }

    /// Goes to a place, counted from the begin; beyond the end, to the end.
    void moveTo(std::size_t position) { m_position = std::min(position, m_bytes.size()); }

private:
    std::string_view m_bytes;
    std::size_t m_position = 0;
    bool m_failed = false;
};

} // namespace orbisk
