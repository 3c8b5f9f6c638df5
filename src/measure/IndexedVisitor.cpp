#include "measure/IndexedVisitor.h"

#include "measure/FrontHits.h"
#include "measure/GeometryTriangles.h"
#include "measure/PickIndex.h"
#include "measure/TriangleTest.h"

#include <osg/Geode>

#include <cmath>
#include <utility>

namespace orbisk {

namespace {

/// Few models are deeper.
constexpr std::size_t usualDepth = 32;

/// Tests the candidates that a tree names.
struct HitCollector {
    const PickRay& ray;
    const PickVertices& vertices;
    NumberedTriangles triangles;
    FrontHits& hits;

    void expect(std::uint32_t number) {
        for (const std::size_t corner : triangles.corners(number))
            vertices.fetch(corner);
    }

    double test(std::uint32_t number) {
        const Triangle triangle = vertices.triangle(triangles.corners(number));
        if (const std::optional<double> distance = intersect(ray, triangle))
            hits.add({number, *distance});
        return hits.limit();
    }
};

} // namespace

IndexedVisitor::IndexedVisitor(const PickRay& ray, PickIndex& index, PauseDrawing pauseDrawing)
    : IntersectionVisitor(ray.origin, ray.direction, std::move(pauseDrawing)), m_index(index),
      m_isServed(TriangleTree::serves(ray)) {
    _nodePath.reserve(usualDepth);
    m_index.beginPick();
}

// The library's own way from a node to its children, without the detour over each of its classes.

void IndexedVisitor::apply(osg::Group& group) {
    traverse(group);
}

void IndexedVisitor::apply(osg::Geode& geode) {
    traverse(geode);
}

void IndexedVisitor::intersectTriangles(const osg::Geometry& geometry,
                                        const PickVertices& vertices) {
    const GeometryIndex* index = m_isServed ? m_index.find(geometry, matrix()) : nullptr;
    if (!index) {
        IntersectionVisitor::intersectTriangles(geometry, vertices);
        return;
    }
    FrontHits front(ray(), frontDistance());
    collect(*index, geometry, vertices, front);
    if (!front.areEnough()) {
        front.takeAll();
        collect(*index, geometry, vertices, front);
    }
    for (const FrontHits::Hit& hit : front.inOrder())
        keep(hit.distance);
}

void IndexedVisitor::collect(const GeometryIndex& index, const osg::Geometry& geometry,
                             const PickVertices& vertices, FrontHits& hits) const {
    index.tree().forEachCandidate(ray(), hits.limit(),
                                  HitCollector{ray(), vertices, index.triangles(geometry), hits});
}

/// How far off the hit in front is, in lengths of the direction. Nothing where there is none, and
/// where it is at no place: it stays then whatever is hit.
std::optional<double> IndexedVisitor::frontDistance() const {
    if (hits().empty())
        return std::nullopt;
    const double distance = frontLength() / directionLength();
    return std::isnan(distance) ? std::nullopt : std::optional<double>(distance);
}

void IndexedVisitor::beforeOverwriting(const osg::Array& array) {
    m_index.release(array);
}

} // namespace orbisk
