#include "readers/PolygonTessellator.h"

#include "readers/PlaneTurn.h"

#include <osg/BoundingBox>
#include <osg/TriangleIndexFunctor>
#include <osg/Vec3d>
#include <osgUtil/Tessellator>

#include <algorithm>
#include <cmath>
#include <optional>

namespace orbisk {

namespace {

/// The tessellator looks for a fan in polygons of so many corners, and sweeps larger ones.
constexpr std::size_t mostCornersOfFan = 100;

/// So many corners cross themselves half a million times at most, which takes about a second.
constexpr std::size_t mostCornersUnchecked = 1024;

constexpr std::size_t mostCrossings = 2'000'000; ///< of all polygons of a file
constexpr std::size_t mostPairs = 2'000'000'000; ///< of sides that are compared, of a file
constexpr std::size_t mostCrossingsOfCorner = 4; ///< of a polygon, for each of its corners

struct IndexCollector {
    void operator()(unsigned int a, unsigned int b, unsigned int c) {
        indices.insert(indices.end(), {a, b, c});
    }

    std::vector<std::uint32_t> indices;
};

std::vector<std::uint32_t> fanOf(std::uint32_t count) {
    std::vector<std::uint32_t> triangles;
    for (std::uint32_t i = 2; i < count; ++i)
        triangles.insert(triangles.end(), {0, i - 1, i});
    return triangles;
}

/// Twice the area of each triangle from the first corner to a side, as a vector.
std::vector<osg::Vec3d> fanAreas(const std::vector<osg::Vec3>& outline) {
    std::vector<osg::Vec3d> areas;
    const osg::Vec3d first(outline.front());
    for (std::size_t i = 2; i < outline.size(); ++i)
        areas.push_back((osg::Vec3d(outline[i - 1]) - first) ^ (osg::Vec3d(outline[i]) - first));
    return areas;
}

/// A side of a polygon in the plane, its left end first.
struct Side {
    osg::Vec2d left;
    osg::Vec2d right;
};

bool cross(const Side& s, const Side& t) {
    const auto apart = [](double a, double b, double c, double d) {
        return std::max(a, b) < std::min(c, d) || std::max(c, d) < std::min(a, b);
    };
    if (apart(s.left.y(), s.right.y(), t.left.y(), t.right.y()))
        return false;
    return turn(s.left, s.right, t.left) * turn(s.left, s.right, t.right) < 0.0 &&
           turn(t.left, t.right, s.left) * turn(t.left, t.right, s.right) < 0.0;
}

/// The sides of a polygon without the axis that its plane is most nearly perpendicular to, from
/// left to right.
std::vector<Side> sidesOf(const osg::Vec3Array& outline) {
    osg::Vec3d area;
    for (std::size_t i = 0; i < outline.size(); ++i)
        area += osg::Vec3d(outline[i]) ^ osg::Vec3d(outline[(i + 1) % outline.size()]);
    int axis = 0;
    for (int i = 1; i < osg::Vec3d::num_components; ++i)
        if (std::abs(area[i]) > std::abs(area[axis]))
            axis = i;
    const int across = axis == 0 ? 1 : 0;
    const int up = axis == 2 ? 1 : 2;
    const auto inPlane = [&](const osg::Vec3& corner) {
        return osg::Vec2d(static_cast<double>(corner[across]), static_cast<double>(corner[up]));
    };
    std::vector<Side> sides;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        Side side{inPlane(outline[i]), inPlane(outline[(i + 1) % outline.size()])};
        if (side.right.x() < side.left.x())
            std::swap(side.left, side.right);
        sides.push_back(side);
    }
    std::sort(sides.begin(), sides.end(),
              [](const Side& a, const Side& b) { return a.left.x() < b.left.x(); });
    return sides;
}

/// How often the polygon crosses itself; nothing when it is more than `most`, or when there are
/// more pairs of sides to compare than `pairs` still allows.
std::optional<std::size_t> crossings(const osg::Vec3Array& outline, std::size_t most,
                                     std::size_t& pairs) {
    const std::vector<Side> sides = sidesOf(outline);
    std::size_t count = 0;
    for (std::size_t i = 0; i < sides.size(); ++i)
        for (std::size_t j = i + 1; j < sides.size() && sides[j].left.x() <= sides[i].right.x();
             ++j) {
            if (++pairs > mostPairs)
                return std::nullopt;
            if (cross(sides[i], sides[j]) && ++count > most)
                return std::nullopt;
        }
    return count;
}

} // namespace

bool PolygonTessellator::isFan(const std::vector<osg::Vec3>& outline) {
    // Nearer to 0 than this, rounding could make the tessellator find the other sign.
    constexpr double clearly = 1e-9;
    if (outline.size() > mostCornersOfFan)
        return false;
    const std::vector<osg::Vec3d> areas = fanAreas(outline);
    osg::Vec3d sum;
    const auto isAlongSum = [&](const osg::Vec3d& area) {
        return area * sum > clearly * area.length() * sum.length();
    };
    for (const osg::Vec3d& area : areas) {
        if (sum != osg::Vec3d() && !isAlongSum(area))
            return false;
        sum += area;
    }
    return std::all_of(areas.begin(), areas.end(), isAlongSum);
}

std::vector<std::uint32_t> PolygonTessellator::split(osg::Geometry& polygon) {
    const auto& outline = static_cast<const osg::Vec3Array&>(*polygon.getVertexArray());
    const auto count = static_cast<std::uint32_t>(outline.size());
    const std::size_t most = std::min(mostCrossingsOfCorner * count, mostCrossings - m_crossings);
    if (m_crossings >= mostCrossings ||
        (count > mostCornersUnchecked && !crossings(outline, most, m_pairs)))
        return fanOf(count);
    polygon.addPrimitiveSet(new osg::DrawArrays(GL_POLYGON, 0, static_cast<GLsizei>(count)));
    osgUtil::Tessellator tessellator;
    tessellator.retessellatePolygons(polygon);
    osg::TriangleIndexFunctor<IndexCollector> triangles;
    for (const auto& primitives : polygon.getPrimitiveSetList())
        primitives->accept(triangles);
    m_crossings = std::min(mostCrossings, m_crossings + outline.size() - count);
    return std::move(triangles.indices);
}

} // namespace orbisk
