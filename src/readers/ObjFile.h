#pragma once

#include "readers/DistinctValues.h"

#include <osg/Vec2>
#include <osg/Vec3>
#include <osg/Vec3d>
#include <osg/Vec4>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// A corner of a face, line or point: indices into the values of its file, `none` where the corner
/// has no such value or the file names one that it has not.
struct ObjCorner {
    static constexpr std::int32_t none = -1;

    std::int32_t position = none;
    std::int32_t texture = none;
    std::int32_t normal = none;
};

/// A face, a line through its corners, or points.
struct ObjElement {
    enum class Kind : std::uint8_t { Points, Line, Face };

    std::uint32_t firstCorner = 0;
    std::uint32_t cornerCount = 0;
    std::uint32_t group = 0;
    Kind kind = Kind::Face;
};

/// What elements have in common that go into one geometry.
struct ObjGroup {
    std::uint32_t material = 0; ///< this and the next two: into the names
    std::uint32_t object = 0;
    std::uint32_t name = 0;
    int smoothing = 0;
    bool hasTextures = false; ///< of each corner
    bool hasNormals = false;
};

/// An OBJ file as it stands, y up as most writers have it: its values, and the elements in the
/// order of the file.
///
/// A position that is not finite keeps its place, so that the ones after it keep their number; a
/// normal or texture coordinate that is not finite is 0, and a component of a colour 1.
struct ObjFile {
    std::vector<osg::Vec3d> positions;
    std::vector<osg::Vec4> colours; ///< of the positions with the same index; may be fewer
    std::vector<osg::Vec2> textures;
    std::vector<osg::Vec3> normals;

    std::vector<ObjCorner> corners;
    std::vector<ObjElement> elements;
    std::vector<ObjGroup> groups;
    std::vector<std::string> names; ///< of materials, objects and groups; 0 is the empty one
    std::vector<std::string> materialFiles; ///< each once, in the order of the file

    std::size_t unreadLines = 0; ///< that say nothing that is known
};

/// The most groups that a file may have: each takes some kilobytes.
inline constexpr std::size_t mostObjGroups = 1'000'000;

/// Reads the text of an OBJ file. What can't be understood is left out; a position index that is
/// out of range becomes `none`, and an element has normals or texture coordinates only where each
/// of its corners has one. From any thread.
/// @return nothing where there is more than 32 bits can number, or than `mostObjGroups`.
std::optional<ObjFile> readObj(std::string_view text);

} // namespace orbisk
