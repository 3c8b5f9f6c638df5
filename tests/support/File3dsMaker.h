#pragma once

#include "support/MeshFiles.h"

#include <osg/Matrixf>
#include <osg/Vec2>

#include <cstdint>
#include <string>
#include <vector>

namespace orbisk::test {

// Chunks of 3DS files, as a modeller writes them.

inline std::string wholeFile3ds(const std::string& objects, const std::string& keyFrames = {}) {
    return chunk3ds(0x4D4D, chunk3ds(0x3D3D, objects) +
                                (keyFrames.empty() ? keyFrames : chunk3ds(0xB000, keyFrames)));
}

inline std::string points3ds(const std::vector<osg::Vec3>& points) {
    Bytes body;
    body.put(static_cast<std::uint16_t>(points.size()));
    for (const osg::Vec3& point : points)
        body.put(point);
    return chunk3ds(0x4110, body.bytes());
}

inline std::string textureVertices3ds(const std::vector<osg::Vec2>& coordinates) {
    Bytes body;
    body.put(static_cast<std::uint16_t>(coordinates.size()));
    for (const osg::Vec2& one : coordinates)
        body.put(one.x()).put(one.y());
    return chunk3ds(0x4140, body.bytes());
}

/// @param indices three for each face.
/// @param parts chunks of materials and smoothing groups.
inline std::string faces3ds(const std::vector<std::uint16_t>& indices,
                            const std::string& parts = {}) {
    Bytes body;
    body.put(static_cast<std::uint16_t>(indices.size() / 3));
    for (std::size_t i = 0; i < indices.size(); ++i) {
        body.put(indices[i]);
        if (i % 3 == 2)
            body.put(std::uint16_t{7});
    }
    return chunk3ds(0x4120, body.bytes() + parts);
}

inline std::string faceMaterial3ds(const std::string& name,
                                   const std::vector<std::uint16_t>& faces) {
    Bytes body;
    body.putName(name).put(static_cast<std::uint16_t>(faces.size()));
    for (const std::uint16_t face : faces)
        body.put(face);
    return chunk3ds(0x4130, body.bytes());
}

inline std::string smoothing3ds(const std::vector<std::uint32_t>& groups) {
    Bytes body;
    for (const std::uint32_t group : groups)
        body.put(group);
    return chunk3ds(0x4150, body.bytes());
}

inline std::string matrix3ds(const osg::Matrixf& matrix) {
    Bytes body;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            body.put(matrix(row, column));
    return chunk3ds(0x4160, body.bytes());
}

inline std::string object3ds(const std::string& name, const std::string& mesh) {
    return chunk3ds(0x4000, Bytes().putName(name).bytes() + chunk3ds(0x4100, mesh));
}

inline std::string name3ds(std::uint16_t kind, const std::string& name) {
    return chunk3ds(kind, Bytes().putName(name).bytes());
}

inline std::string percentage3ds(std::uint16_t kind, std::int16_t percent) {
    return chunk3ds(kind, chunk3ds(0x0030, Bytes().put(percent).bytes()));
}

inline std::string colour3ds(std::uint16_t kind, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
    return chunk3ds(kind, chunk3ds(0x0011, Bytes().put(r).put(g).put(b).bytes()));
}

inline std::string material3ds(const std::string& name, const std::string& parts = {}) {
    return chunk3ds(0xAFFF, name3ds(0xA000, name) + parts);
}

inline std::string number3ds(std::uint16_t kind, float number) {
    return chunk3ds(kind, Bytes().put(number).bytes());
}

struct Key3ds {
    std::int32_t frame = 0;
    std::vector<float> numbers;
};

inline std::string track3ds(std::uint16_t kind, const std::vector<Key3ds>& keys) {
    Bytes body;
    body.put(std::uint16_t{0}).put(std::uint32_t{0}).put(std::uint32_t{0});
    body.put(static_cast<std::uint32_t>(keys.size()));
    for (const Key3ds& key : keys) {
        // The third bit: one number of easing follows.
        body.put(key.frame).put(std::uint16_t{4}).put(0.5f);
        for (const float number : key.numbers)
            body.put(number);
    }
    return chunk3ds(kind, body.bytes());
}

inline constexpr std::uint16_t noParent3ds = 0xFFFF;

inline std::string node3ds(std::uint16_t id, std::uint16_t parent, const std::string& name,
                           const std::string& parts = {}, std::uint16_t kind = 0xB002) {
    return chunk3ds(
        kind,
        chunk3ds(0xB030, Bytes().put(id).bytes()) +
            chunk3ds(0xB010, Bytes().putName(name).put(std::uint32_t{0}).put(parent).bytes()) +
            parts);
}

} // namespace orbisk::test
