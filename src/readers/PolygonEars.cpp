#include "readers/PolygonEars.h"

#include "readers/PlaneTurn.h"

#include <cmath>
#include <numeric>

namespace orbisk {

namespace {

using Places = std::vector<std::size_t>;
using Points = std::vector<osg::Vec2d>;

/// Ears are found in quadratic time; a file may hold polygons of a million corners.
constexpr std::size_t mostCornersForEars = 64;

/// The polygon seen from where it turns to the left, along the axis that it shows most of itself
/// to.
Points project(const std::vector<osg::Vec3d>& corners) {
    osg::Vec3d normal;
    for (std::size_t i = 0; i < corners.size(); ++i)
        normal += (corners[i] - corners[0]) ^ (corners[(i + 1) % corners.size()] - corners[0]);
    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(normal[i]) > std::abs(normal[axis]))
            axis = i;
    const int right = normal[axis] >= 0.0 ? (axis + 1) % 3 : (axis + 2) % 3;
    const int up = normal[axis] >= 0.0 ? (axis + 2) % 3 : (axis + 1) % 3;
    Points points;
    points.reserve(corners.size());
    for (const osg::Vec3d& corner : corners)
        points.emplace_back(corner[right] - corners[0][right], corner[up] - corners[0][up]);
    return points;
}

bool isConvex(const Points& points) {
    const std::size_t count = points.size();
    for (std::size_t i = 0; i < count; ++i)
        if (turn(points[i], points[(i + 1) % count], points[(i + 2) % count]) < 0.0)
            return false;
    return true;
}

/// Whether the corner at `at` of what is left can be cut off: it turns left, and no other corner
/// lies within what goes.
bool isEar(const Points& points, const Places& left, std::size_t at) {
    const std::size_t count = left.size();
    const std::size_t before = left[(at + count - 1) % count];
    const std::size_t after = left[(at + 1) % count];
    const osg::Vec2d& a = points[before];
    const osg::Vec2d& b = points[left[at]];
    const osg::Vec2d& c = points[after];
    if (turn(a, b, c) <= 0.0)
        return false;
    for (const std::size_t other : left) {
        const osg::Vec2d& p = points[other];
        // Corners of an outline that touches itself stand in one place.
        if (p == a || p == b || p == c)
            continue;
        if (turn(a, b, p) >= 0.0 && turn(b, c, p) >= 0.0 && turn(c, a, p) >= 0.0)
            return false;
    }
    return true;
}

/// Moves ears from what is left of the polygon to the triangles, as long as there are any.
void takeEars(const Points& points, Places& left, Places& triangles) {
    std::size_t at = 0;
    // Once round without an ear, and the outline isn't a simple one.
    for (std::size_t tried = 0; tried < left.size() && left.size() > 3;) {
        if (!isEar(points, left, at)) {
            at = (at + 1) % left.size();
            ++tried;
            continue;
        }
        const std::size_t count = left.size();
        triangles.insert(triangles.end(),
                         {left[(at + count - 1) % count], left[at], left[(at + 1) % count]});
        left.erase(left.begin() + static_cast<std::ptrdiff_t>(at));
        at %= left.size();
        tried = 0;
    }
}

void addFan(const Places& left, Places& triangles) {
    for (std::size_t i = 1; i + 1 < left.size(); ++i)
        triangles.insert(triangles.end(), {left[0], left[i], left[i + 1]});
}

} // namespace

std::vector<std::size_t> cutIntoEars(const std::vector<osg::Vec3d>& corners) {
    Places left(corners.size());
    std::iota(left.begin(), left.end(), 0);
    Places triangles;
    if (corners.size() > 3 && corners.size() <= mostCornersForEars) {
        const Points points = project(corners);
        if (!isConvex(points))
            takeEars(points, left, triangles);
    }
    addFan(left, triangles);
    return triangles;
}

} // namespace orbisk
