#pragma once

#include <osg/Geometry>
#include <osg/Vec3>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbisk {

/// Splits polygons of any shape into triangles as the library's `osgUtil::Tessellator` does, which
/// it uses. One object splits the polygons of one file, and sees to it that all of them together
/// take no longer than a file may: where polygons cross themselves more often than a file with
/// something to show has them do, the rest is split as if it were convex. For polygons that need no
/// more than their own corners `cutIntoEars` is simpler and faster.
class PolygonTessellator {
public:
    /// Whether the triangles from the first corner to each side are what splitting gives.
    static bool isFan(const std::vector<osg::Vec3>& outline);

    /// Splits the polygon whose corners are the vertices of `polygon`, a geometry with any arrays
    /// for each vertex and no primitive sets. Where the polygon crosses itself, vertices are added
    /// and their attributes interpolated.
    /// @return three vertex numbers for each triangle.
    std::vector<std::uint32_t> split(osg::Geometry& polygon);

private:
    std::size_t m_crossings = 0; ///< so far
    std::size_t m_pairs = 0;     ///< of sides looked at for crossings, so far
};

} // namespace orbisk
