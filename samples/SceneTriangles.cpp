#include "SceneTriangles.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr std::size_t kLeafSize = 4;

/// Whether the ray enters the box before @p maxRange.
bool meetsBox(const osg::BoundingBoxd& box, const osg::Vec3d& origin, const osg::Vec3d& inverse,
              double maxRange) {
    double enter = 0.0;
    double leave = maxRange;
    for (unsigned i = 0; i < 3; ++i) {
        const double a = (box._min[i] - origin[i]) * inverse[i];
        const double b = (box._max[i] - origin[i]) * inverse[i];
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
    }
    return enter <= leave;
}

void meetTriangle(const SceneTriangle& triangle, const osg::Vec3d& origin,
                  const osg::Vec3d& direction, RayHit& best) {
    const osg::Vec3d e1 = triangle.corners[1] - triangle.corners[0];
    const osg::Vec3d e2 = triangle.corners[2] - triangle.corners[0];
    const osg::Vec3d p = direction ^ e2;
    const double determinant = e1 * p;
    if (std::fabs(determinant) < 1e-12) {
        return;
    }
    const osg::Vec3d offset = origin - triangle.corners[0];
    const double u = (offset * p) / determinant;
    const osg::Vec3d q = offset ^ e1;
    const double v = (direction * q) / determinant;
    const double range = (e2 * q) / determinant;
    if (u < 0.0 || v < 0.0 || u + v > 1.0 || range <= 0.0 || range >= best.range) {
        return;
    }
    best.found = true;
    best.range = range;
    best.surface = triangle.surface;
    best.uv = triangle.uv[0] * (1.0 - u - v) + triangle.uv[1] * u + triangle.uv[2] * v;
    best.normal = e1 ^ e2;
}

double middle(const SceneTriangle& triangle, unsigned axis) {
    return triangle.corners[0][axis] + triangle.corners[1][axis] + triangle.corners[2][axis];
}

} // namespace

SceneTriangles::SceneTriangles(std::vector<SceneTriangle> triangles)
    : m_triangles(std::move(triangles)) {
    m_nodes.emplace_back();
    split(0, 0, m_triangles.size());
}

void SceneTriangles::split(std::size_t nodeIndex, std::size_t first, std::size_t count) {
    osg::BoundingBoxd box;
    for (std::size_t i = first; i < first + count; ++i) {
        for (const osg::Vec3d& corner : m_triangles[i].corners) {
            box.expandBy(corner);
        }
    }
    m_nodes[nodeIndex].box = box;
    if (count <= kLeafSize) {
        m_nodes[nodeIndex].first = first;
        m_nodes[nodeIndex].count = count;
        return;
    }
    const osg::Vec3d size = box._max - box._min;
    unsigned axis = size.x() > size.y() ? 0 : 1;
    axis = size.z() > size[axis] ? 2 : axis;
    const auto begin = m_triangles.begin() + static_cast<std::ptrdiff_t>(first);
    const auto half = static_cast<std::ptrdiff_t>(count / 2);
    std::nth_element(begin, begin + half, begin + static_cast<std::ptrdiff_t>(count),
                     [axis](const SceneTriangle& a, const SceneTriangle& b) {
                         return middle(a, axis) < middle(b, axis);
                     });
    const std::size_t left = m_nodes.size();
    m_nodes.resize(left + 2);
    m_nodes[nodeIndex].first = left;
    split(left, first, count / 2);
    split(left + 1, first + count / 2, count - count / 2);
}

RayHit SceneTriangles::firstHit(const osg::Vec3d& origin, const osg::Vec3d& direction,
                                double maxRange) const {
    const auto inverted = [](double value) {
        return 1.0 / (std::fabs(value) < 1e-12 ? 1e-12 : value);
    };
    const osg::Vec3d inverse(inverted(direction.x()), inverted(direction.y()),
                             inverted(direction.z()));
    RayHit best;
    best.range = maxRange;
    std::array<std::size_t, 64> waiting{};
    std::size_t depth = 1;
    while (depth > 0) {
        const Node& node = m_nodes[waiting[--depth]];
        if (!meetsBox(node.box, origin, inverse, best.range)) {
            continue;
        }
        if (node.count == 0) {
            waiting[depth++] = node.first;
            waiting[depth++] = node.first + 1;
        } else {
            for (std::size_t i = node.first; i < node.first + node.count; ++i) {
                meetTriangle(m_triangles[i], origin, direction, best);
            }
        }
    }
    best.normal.normalize();
    return best;
}

} // namespace samples
