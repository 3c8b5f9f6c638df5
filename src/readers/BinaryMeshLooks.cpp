#include "readers/BinaryMeshLooks.h"

#include "readers/ByteReader.h"
#include "readers/FileBytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>

namespace orbisk {

namespace {

using Refusal = std::optional<std::string>;

std::uint8_t byteAt(std::string_view bytes, std::size_t place) {
    return place < bytes.size() ? static_cast<std::uint8_t>(bytes[place]) : 0;
}

/// A number of `size` bytes, the last of which stands for the least; zeros behind the end.
std::uint32_t bigEndian(std::string_view bytes, std::size_t place, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i)
        number = number << 8 | byteAt(bytes, place + i);
    return number;
}

/// The numbers at the head of an MD2 file, in their order.
enum Md2Number : std::size_t {
    Md2FrameSize = 4,
    Md2Skins,
    Md2Vertices,
    Md2TexCoords,
    Md2Triangles,
    Md2Frames = 10,
    Md2SkinOffset,
    Md2TexCoordOffset,
    Md2TriangleOffset,
    Md2FrameOffset,
    Md2Numbers = 17
};

constexpr std::int64_t md2SkinBytes = 64;
constexpr std::int64_t md2TexCoordBytes = 4;
constexpr std::int64_t md2TriangleBytes = 12;
constexpr std::int64_t md2VertexBytes = 4;
constexpr std::int64_t md2FrameHead = 40;
constexpr std::uint8_t md2Normals = 162;

class Md2Look {
public:
    explicit Md2Look(std::string_view bytes) : m_bytes(bytes) {
        ByteReader head(bytes);
        for (std::int64_t& number : m_head)
            number = head.read<std::int32_t>();
    }

    Refusal run() const {
        if (m_bytes.size() < Md2Numbers * sizeof(std::int32_t))
            return "the file ends too early";
        for (const Md2Number count : {Md2Skins, Md2Vertices, Md2TexCoords, Md2Triangles, Md2Frames})
            if (m_head[count] < 0)
                return "a count is negative";
        if (!isInside(Md2SkinOffset, m_head[Md2Skins], md2SkinBytes) ||
            !isInside(Md2TexCoordOffset, m_head[Md2TexCoords], md2TexCoordBytes) ||
            !isInside(Md2TriangleOffset, m_head[Md2Triangles], md2TriangleBytes) ||
            m_head[Md2FrameSize] < md2FrameHead + m_head[Md2Vertices] * md2VertexBytes ||
            !isInside(Md2FrameOffset, m_head[Md2Frames], m_head[Md2FrameSize]))
            return "more is announced than the file has";
        return hasNormals() ? Refusal() : "a normal is none of those that there are";
    }

private:
    bool isInside(Md2Number offset, std::int64_t count, std::int64_t size) const {
        return count == 0 ||
               (m_head[offset] >= 0 &&
                count <= (static_cast<std::int64_t>(m_bytes.size()) - m_head[offset]) / size);
    }

    bool hasNormals() const {
        for (std::int64_t frame = 0; frame < m_head[Md2Frames]; ++frame)
            for (std::int64_t vertex = 0; vertex < m_head[Md2Vertices]; ++vertex) {
                const std::int64_t end = m_head[Md2FrameOffset] + frame * m_head[Md2FrameSize] +
                                         md2FrameHead + (vertex + 1) * md2VertexBytes;
                if (byteAt(m_bytes, static_cast<std::size_t>(end - 1)) >= md2Normals)
                    return false;
            }
        return true;
    }

    std::string_view m_bytes;
    std::array<std::int64_t, Md2Numbers> m_head{};
};

constexpr std::size_t tagSize = 4;

/// Chunks whose content is chunks, too.
const std::set<std::string_view> partedChunks = {"BLOK", "IMAP", "PROC", "GRAD", "SHDR", "TMAP"};

/// Where the content of a chunk begins that stands behind a text and its zero, and a byte more
/// where that makes the number even.
std::size_t afterText(std::string_view bytes, std::size_t place) {
    const std::size_t zero = bytes.find('\0', place);
    if (zero == std::string_view::npos)
        return bytes.size();
    return zero + 1 + (zero + 1 - place) % 2;
}

/// Whether chunks with sizes of two bytes stay within what they are in.
bool areSmallChunksWhole(std::string_view bytes, int depth) {
    constexpr std::size_t head = tagSize + sizeof(std::uint16_t);
    constexpr int deepest = 4;
    while (!bytes.empty()) {
        const std::size_t size = bigEndian(bytes, tagSize, sizeof(std::uint16_t));
        if (bytes.size() < head + size || depth > deepest)
            return false;
        std::string_view content = bytes.substr(head, size);
        const std::string_view tag = bytes.substr(0, tagSize);
        if (partedChunks.count(tag) != 0) {
            // All but these begin with a text that orders them.
            if (tag != "BLOK" && tag != "TMAP")
                content.remove_prefix(std::min(afterText(content, 0), content.size()));
            if (tag != "SHDR" && !areSmallChunksWhole(content, depth + 1))
                return false;
        }
        bytes.remove_prefix(std::min(head + size + size % 2, bytes.size()));
    }
    return true;
}

class LightwaveLook {
public:
    explicit LightwaveLook(std::string_view bytes) : m_bytes(bytes) {}

    Refusal run() {
        constexpr std::size_t chunkHead = 2 * sizeof(std::uint32_t);
        constexpr std::size_t fileHead = chunkHead + tagSize;
        const std::string_view kind = m_bytes.substr(std::min(chunkHead, m_bytes.size()), tagSize);
        if (kind != "LWO2" && kind != "LWOB")
            return std::nullopt;
        const std::size_t whole = bigEndian(m_bytes, tagSize, sizeof(std::uint32_t));
        if (whole + chunkHead + whole % 2 != m_bytes.size() + m_bytes.size() % 2)
            return "the file is not as long as it says";
        for (std::size_t place = fileHead; place < m_bytes.size();) {
            const std::size_t size = bigEndian(m_bytes, place + tagSize, sizeof(std::uint32_t));
            if (place + chunkHead > m_bytes.size() || size > m_bytes.size() - place - chunkHead)
                return "a chunk is larger than the file";
            const std::string_view tag = m_bytes.substr(place, tagSize);
            const std::string_view content = m_bytes.substr(place + chunkHead, size);
            if (!(kind == "LWO2" ? isFine(tag, content) : isOldFine(tag, content)))
                return "a chunk is larger than what it is in";
            place += chunkHead + size + size % 2;
        }
        return kind == "LWOB" ? oldRefusal() : std::nullopt;
    }

private:
    static bool isFine(std::string_view tag, std::string_view content) {
        constexpr std::size_t pointBytes = 12;
        if (tag == "SURF")
            return areSmallChunksWhole(
                content.substr(std::min(afterText(content, afterText(content, 0)), content.size())),
                0);
        if (tag == "CLIP")
            return areSmallChunksWhole(content.substr(std::min(tagSize, content.size())), 0);
        return tag != "PNTS" || content.size() % pointBytes == 0;
    }

    bool isOldFine(std::string_view tag, std::string_view content) {
        constexpr std::size_t pointBytes = 12;
        if (tag == "PNTS")
            m_points = content.size() / pointBytes;
        else if (tag == "SRFS")
            for (std::size_t place = 0; place < content.size(); ++m_surfaces)
                place = afterText(content, place);
        else if (tag == "POLS")
            return areOldFacesWhole(content);
        else if (tag == "SURF")
            return isOldSurfaceFine(content);
        return true;
    }

    bool areOldFacesWhole(std::string_view content) {
        constexpr std::size_t word = sizeof(std::uint16_t);
        for (std::size_t place = 0; place < content.size(); place += word) {
            const std::size_t corners = bigEndian(content, place, word);
            place += word;
            if (place + (corners + 1) * word > content.size())
                return false;
            for (std::size_t i = 0; i < corners; ++i, place += word)
                m_highestPoint = std::max(m_highestPoint, bigEndian(content, place, word));
            const std::uint32_t surface = bigEndian(content, place, word);
            m_lowestSurface = std::min(m_lowestSurface, surface);
            m_highestSurface = std::max(m_highestSurface, surface);
            m_hasFaces = true;
        }
        return true;
    }

    static bool isOldSurfaceFine(std::string_view content) {
        constexpr std::uint32_t wrapModes = 4;
        constexpr std::size_t head = tagSize + sizeof(std::uint16_t);
        const std::size_t begin = std::min(afterText(content, 0), content.size());
        if (!areSmallChunksWhole(content.substr(begin), 0))
            return false;
        for (std::size_t place = begin; place < content.size();) {
            if (content.substr(place, tagSize) == "TWRP" &&
                (bigEndian(content, place + head, 2) >= wrapModes ||
                 bigEndian(content, place + head + 2, 2) >= wrapModes))
                return false;
            const std::size_t size = bigEndian(content, place + tagSize, sizeof(std::uint16_t));
            place += head + size + size % 2;
        }
        return true;
    }

    Refusal oldRefusal() const {
        if (m_hasFaces &&
            (m_highestPoint >= m_points || m_lowestSurface == 0 || m_highestSurface > m_surfaces))
            return "a face has points or a surface that are not there";
        return std::nullopt;
    }

    std::string_view m_bytes;
    std::size_t m_points = 0;
    std::size_t m_surfaces = 0;
    bool m_hasFaces = false;
    std::uint32_t m_highestPoint = 0;
    std::uint32_t m_highestSurface = 0;
    std::uint32_t m_lowestSurface = UINT32_MAX;
};

} // namespace

Refusal md2Refusal(const std::string& path) {
    const std::optional<FileBytes> bytes = FileBytes::read(path);
    return bytes ? Md2Look(bytes->view()).run() : std::nullopt;
}

Refusal lightwaveRefusal(const std::string& path) {
    const std::optional<FileBytes> bytes = FileBytes::read(path);
    return bytes ? LightwaveLook(bytes->view()).run() : std::nullopt;
}

} // namespace orbisk
