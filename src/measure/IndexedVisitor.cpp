#include "measure/IndexedVisitor.h"

#include "measure/GeometryTriangles.h"
#include "measure/PickIndex.h"
#include "measure/TriangleTest.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace orbisk {

IndexedVisitor::IndexedVisitor(const PickRay& ray, PickIndex& index, PauseDrawing pauseDrawing)
    : IntersectionVisitor(ray.origin, ray.direction, std::move(pauseDrawing)), m_index(index),
      m_isServed(TriangleTree::serves(ray)) {
    m_index.beginPick();
}

void IndexedVisitor::intersectTriangles(const osg::Geometry& geometry) {
    const GeometryIndex* index = m_isServed ? m_index.find(geometry, matrix()) : nullptr;
    if (!index) {
        IntersectionVisitor::intersectTriangles(geometry);
        return;
    }
    const PickVertices vertices(geometry.getVertexArray(), matrix());
    std::vector<std::pair<std::uint32_t, double>> hits;
    index->tree().forEachCandidate(ray(), [&](std::uint32_t number) {
        const Triangle triangle = vertices.triangle(index->corners(geometry, number));
        if (const std::optional<double> distance = intersect(ray(), triangle))
            hits.emplace_back(number, *distance);
    });
    // Which hit is kept in front depends on their order.
    std::sort(hits.begin(), hits.end(),
              [](const auto& one, const auto& other) { return one.first < other.first; });
    for (const auto& [number, distance] : hits)
        keep(distance);
}

void IndexedVisitor::beforeOverwriting(const osg::Array& array) {
    m_index.release(array);
}

} // namespace orbisk
