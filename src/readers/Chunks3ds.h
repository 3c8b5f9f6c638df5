#pragma once

#include "readers/ByteReader.h"

#include <osg/Vec3>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace orbisk {

/// The kinds of chunks of a 3DS file that matter for a model.
enum Chunk3ds : std::uint16_t {
    ColourFloat = 0x0010,
    ColourBytes = 0x0011,
    LinearColourBytes = 0x0012,
    LinearColourFloat = 0x0013,
    IntegerPercentage = 0x0030,
    ModelFile = 0x4D4D,
    LibraryFile = 0x3DAA,
    ProjectFile = 0xC23D,
    ModelData = 0x3D3D,
    MaterialEntry = 0xAFFF,
    MaterialName = 0xA000,
    MaterialAmbient = 0xA010,
    MaterialDiffuse = 0xA020,
    MaterialSpecular = 0xA030,
    MaterialShininess = 0xA040,
    MaterialShineStrength = 0xA041,
    MaterialTransparency = 0xA050,
    MaterialTwoSided = 0xA081,
    MaterialTexture = 0xA200,
    MaterialOpacity = 0xA210,
    MaterialReflection = 0xA220,
    MapName = 0xA300,
    MapFlags = 0xA351,
    MapScaleU = 0xA354,
    MapScaleV = 0xA356,
    MapOffsetU = 0xA358,
    MapOffsetV = 0xA35A,
    NamedObject = 0x4000,
    TriangleObject = 0x4100,
    PointArray = 0x4110,
    FaceArray = 0x4120,
    FaceMaterial = 0x4130,
    TextureVertices = 0x4140,
    SmoothingGroups = 0x4150,
    MeshMatrix = 0x4160,
    KeyFrameData = 0xB000,
    AmbientNode = 0xB001,
    ObjectNode = 0xB002,
    CameraNode = 0xB003,
    CameraTargetNode = 0xB004,
    LightNode = 0xB005,
    SpotTargetNode = 0xB006,
    SpotlightNode = 0xB007,
    NodeHeader = 0xB010,
    InstanceName = 0xB011,
    Pivot = 0xB013,
    PositionTrack = 0xB020,
    RotationTrack = 0xB021,
    ScaleTrack = 0xB022,
    NodeId = 0xB030,
};

/// A chunk whose header was read.
struct ChunkHeader3ds {
    std::uint16_t kind;
    std::size_t end; ///< the place behind the chunk
};

inline constexpr std::size_t chunkHeaderSize3ds = sizeof(std::uint16_t) + sizeof(std::uint32_t);

/// Reads the header of a chunk that may reach up to `end`; where it claims to reach further, it
/// doesn't. A chunk that is shorter than its header is a failure.
inline ChunkHeader3ds readChunkHeader3ds(ByteReader& reader, std::size_t end) {
    const std::size_t begin = reader.position();
    const auto kind = reader.read<std::uint16_t>();
    const std::size_t size = reader.read<std::uint32_t>();
    if (size < chunkHeaderSize3ds)
        reader.fail();
    return {kind, std::min(begin + size, end)};
}

/// Goes through the chunks from where `reader` is up to `end`, and calls `visit` with each one's
/// kind and end; the reader is then at what the chunk holds. It comes to stand behind them all.
template <class Visit>
void forEachChunk(ByteReader& reader, std::size_t end, const Visit& visit) {
    while (!reader.failed() && reader.position() + chunkHeaderSize3ds <= end) {
        const ChunkHeader3ds header = readChunkHeader3ds(reader, end);
        if (reader.failed())
            return;
        visit(header.kind, header.end);
        reader.moveTo(header.end);
    }
}

/// Takes a name, which ends with a zero byte. It fails, with an empty one, where it has no end.
inline std::string readName3ds(ByteReader& reader) {
    constexpr std::size_t longestName = 64;
    return std::string(reader.readText(longestName));
}

/// Takes three numbers in single precision.
inline osg::Vec3 readVector3ds(ByteReader& reader) {
    osg::Vec3 vector;
    for (int i = 0; i < osg::Vec3::num_components; ++i)
        vector[i] = reader.read<float>();
    return vector;
}

/// Whether `count` things of `size` bytes have room up to `end`; else the file makes no sense, and
/// `reader` fails.
inline bool hasRoomFor(ByteReader& reader, std::size_t count, std::size_t size, std::size_t end) {
    if (reader.position() <= end && count * size <= end - reader.position())
        return true;
    reader.fail();
    return false;
}

} // namespace orbisk
