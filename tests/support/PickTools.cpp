#include "support/PickTools.h"

#include "measure/IntersectionVisitor.h"

#include <osg/Group>
#include <osg/MatrixTransform>

#include <algorithm>
#include <cstring>

namespace orbisk::test {

namespace {

constexpr double startHeight = 10.0;

} // namespace

osg::ref_ptr<osg::Geometry> makeGeometry(const std::vector<osg::Vec3>& vertices,
                                         osg::PrimitiveSet* set) {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3Array(vertices.begin(), vertices.end()));
    geometry->addPrimitiveSet(set);
    return geometry;
}

osg::ref_ptr<osg::Geometry> makeDoubleGeometry(const std::vector<osg::Vec3d>& vertices,
                                               osg::PrimitiveSet* set) {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(new osg::Vec3dArray(vertices.begin(), vertices.end()));
    geometry->addPrimitiveSet(set);
    return geometry;
}

osg::ref_ptr<osg::Geometry> makeTriangles(const std::vector<osg::Vec3>& vertices) {
    return makeGeometry(vertices, new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0,
                                                      static_cast<int>(vertices.size())));
}

osg::ref_ptr<osg::Geometry> makeTriangleAt(float z) {
    return makeTriangles({{-1, -1, z}, {1, -1, z}, {0, 1, z}});
}

osg::ref_ptr<osg::Node> transformed(osg::Node* node, const osg::Matrixd& matrix) {
    const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
    transform->addChild(node);
    return transform;
}

osg::ref_ptr<osg::Node> groupOf(const std::vector<osg::ref_ptr<osg::Node>>& children) {
    const osg::ref_ptr<osg::Group> group = new osg::Group;
    for (const osg::ref_ptr<osg::Node>& child : children)
        group->addChild(child);
    return group;
}

std::vector<osg::Vec3d> hitsOf(osg::Node& model, const PickRay& ray) {
    IntersectionVisitor visitor(ray.origin, ray.direction);
    model.accept(visitor);
    return visitor.hits().all();
}

std::optional<osg::Vec3d> firstHit(osg::Node& model, const PickRay& ray) {
    const std::vector<osg::Vec3d> hits = hitsOf(model, ray);
    return hits.empty() ? std::nullopt : std::optional<osg::Vec3d>(hits.front());
}

bool isHit(osg::Node& model, const PickRay& ray) {
    return firstHit(model, ray).has_value();
}

PickRay rayBetween(const osg::Vec3d& from, const osg::Vec3d& to) {
    PickRay ray{from, to - from};
    ray.direction.normalize();
    return ray;
}

PickRay rayDown(double x, double y) {
    return {osg::Vec3d(x, y, startHeight), osg::Vec3d(0, 0, -1)};
}

bool sameBits(const osg::Vec3d& one, const osg::Vec3d& other) {
    return std::memcmp(one.ptr(), other.ptr(), 3 * sizeof(double)) == 0;
}

bool samePick(const std::vector<osg::Vec3d>& walked, const std::vector<osg::Vec3d>& indexed) {
    if (walked.empty() || indexed.empty())
        return walked.empty() && indexed.empty();
    return sameBits(walked.front(), indexed.front()) &&
           std::all_of(indexed.begin(), indexed.end(), [&walked](const osg::Vec3d& hit) {
               return std::any_of(walked.begin(), walked.end(),
                                  [&hit](const osg::Vec3d& known) { return sameBits(hit, known); });
           });
}

} // namespace orbisk::test
