#include "measure/IntersectionVisitor.h"

#include "measure/TriangleTest.h"

#include <utility>
#include <vector>

namespace orbisk {

IntersectionVisitor::IntersectionVisitor(const osg::Vec3d& origin, const osg::Vec3d& direction,
                                         PauseDrawing pauseDrawing)
    : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), m_ray{origin, direction},
      m_directionLength(direction.length()), m_pauseDrawing(std::move(pauseDrawing)) {}

IntersectionVisitor::~IntersectionVisitor() = default;

void IntersectionVisitor::apply(osg::MatrixTransform& transform) {
    m_matrix = transform.getMatrix();
    traverse(transform);
}

void IntersectionVisitor::apply(osg::Geometry& geometry) {
    if (!meetsSphere(geometry))
        return;
    overwriteVertices(geometry);
    const PickVertices vertices(geometry.getVertexArray(), m_matrix);
    if (vertices.exist())
        intersectTriangles(geometry, vertices);
}

bool IntersectionVisitor::meetsSphere(const osg::Geometry& geometry) const {
    const osg::BoundingSphere& sphere = geometry.getBound();
    const osg::Vec3d center = osg::Vec3f(sphere.center()) * m_matrix;
    const double radius = static_cast<double>(sphere.radius());
    const osg::Vec3d m = m_ray.origin - center;
    const double b = m_ray.direction * m;
    if (b > 0.0)
        return false;
    return b * b - m.length2() + radius * radius >= 0.0;
}

void IntersectionVisitor::overwriteVertices(osg::Geometry& geometry) {
    osg::Array* array = geometry.getVertexArray();
    if (!array || array->getType() != osg::Array::Vec3dArrayType || m_matrix.isIdentity())
        return;
    auto* vertices = dynamic_cast<osg::Vec3dArray*>(array);
    if (!vertices)
        return;
    if (m_pauseDrawing && !m_pause)
        m_pause = m_pauseDrawing();
    beforeOverwriting(*vertices);
    for (osg::Vec3d& vertex : *vertices)
        vertex = vertex * m_matrix;
    // The bound is not dirtied: the sphere test goes on with the one from before.
    vertices->dirty();
    geometry.dirtyGLObjects();
}

void IntersectionVisitor::beforeOverwriting(const osg::Array&) {}

void IntersectionVisitor::intersectTriangles(const osg::Geometry& geometry,
                                             const PickVertices& source) {
    std::vector<osg::Vec3d> vertices;
    vertices.reserve(source.size());
    for (std::size_t i = 0; i < source.size(); ++i)
        vertices.push_back(source.at(i));
    for (const auto& set : geometry.getPrimitiveSetList()) {
        const PickTriangles triangles(*set);
        for (std::size_t number = 0; number < triangles.count(); ++number) {
            const TriangleCorners corners = triangles.corners(number);
            const Triangle triangle{vertices.at(corners[0]), vertices.at(corners[1]),
                                    vertices.at(corners[2])};
            if (const std::optional<double> distance = intersect(m_ray, triangle))
                keep(*distance);
        }
    }
}

void IntersectionVisitor::keep(double distance) {
    const osg::Vec3d hit = m_ray.origin + m_ray.direction * distance;
    const bool isFront = m_hits.empty() || frontLength() > distance * m_directionLength;
    if (isFront)
        m_hits.addFront(hit);
    else
        m_hits.addBack(hit);
}

} // namespace orbisk
