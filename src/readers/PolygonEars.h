#pragma once

#include <osg/Vec3d>

#include <cstddef>
#include <vector>

namespace orbisk {

/// Cuts a polygon of a mesh into triangles: a convex one into a fan from its first corner, else by
/// taking ears off. A polygon that crosses itself, or has more corners than is worth looking at,
/// becomes a fan, right or wrong. Where crossings must be filled as the library fills them, at the
/// price of new vertices and of time, `PolygonTessellator` does it.
///
/// @param corners at least three, finite, more or less in one plane.
/// @return three places in `corners` for each of the triangles, two fewer than corners, that turn
/// as the polygon does.
std::vector<std::size_t> cutIntoEars(const std::vector<osg::Vec3d>& corners);

} // namespace orbisk
