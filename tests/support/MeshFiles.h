#pragma once

#include <osg/Vec3>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace orbisk::test {

/// Bytes of a binary file, put together number by number.
class Bytes {
public:
    /// @param turned whether numbers are in big-endian order (on a little-endian machine).
    explicit Bytes(bool turned = false) : m_turned(turned) {}

    template <class Number>
    Bytes& put(Number number) {
        char bytes[sizeof(Number)];
        std::memcpy(bytes, &number, sizeof(Number));
        if (m_turned)
            std::reverse(bytes, bytes + sizeof(Number));
        m_bytes.append(bytes, sizeof(Number));
        return *this;
    }

    Bytes& put(const osg::Vec3& vector) { return put(vector.x()).put(vector.y()).put(vector.z()); }

    /// The text with a zero behind it.
    Bytes& putName(const std::string& text) {
        m_bytes.append(text.c_str(), text.size() + 1);
        return *this;
    }

    Bytes& putBytes(const std::string& bytes) {
        m_bytes += bytes;
        return *this;
    }

    const std::string& bytes() const { return m_bytes; }

private:
    bool m_turned;
    std::string m_bytes;
};

/// A chunk of a 3DS file.
inline std::string chunk3ds(std::uint16_t kind, const std::string& body) {
    constexpr std::size_t headerSize = 6;
    return Bytes()
        .put(kind)
        .put(static_cast<std::uint32_t>(body.size() + headerSize))
        .putBytes(body)
        .bytes();
}

/// A facet of an STL file.
struct StlFacet {
    std::array<osg::Vec3, 3> corners;
    std::uint16_t colour = 0;
    osg::Vec3 normal = {};
};

/// A binary STL file. @param claimed the number of facets it claims to have.
inline std::string binaryStl(const std::vector<StlFacet>& facets, std::uint32_t claimed,
                             std::string header = "made by a test") {
    constexpr std::size_t headerSize = 80;
    header.resize(headerSize, '\0');
    Bytes bytes;
    bytes.putBytes(header).put(claimed);
    for (const StlFacet& facet : facets) {
        bytes.put(facet.normal);
        for (const osg::Vec3& corner : facet.corners)
            bytes.put(corner);
        bytes.put(facet.colour);
    }
    return bytes.bytes();
}

inline std::string binaryStl(const std::vector<StlFacet>& facets) {
    return binaryStl(facets, static_cast<std::uint32_t>(facets.size()));
}

} // namespace orbisk::test
