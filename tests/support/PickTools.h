#pragma once

#include "measure/PickRay.h"

#include <osg/Geometry>
#include <osg/Node>
#include <osg/Vec3>
#include <osg/Vec3d>
#include <osg/ref_ptr>

#include <optional>
#include <vector>

namespace orbisk::test {

/// A geometry of vertices in single precision with one primitive set.
osg::ref_ptr<osg::Geometry> makeGeometry(const std::vector<osg::Vec3>& vertices,
                                         osg::PrimitiveSet* set);

/// The same with vertices in double precision.
osg::ref_ptr<osg::Geometry> makeDoubleGeometry(const std::vector<osg::Vec3d>& vertices,
                                               osg::PrimitiveSet* set);

/// Separate triangles, three vertices each.
osg::ref_ptr<osg::Geometry> makeTriangles(const std::vector<osg::Vec3>& vertices);

/// One triangle with corners (-1, -1, z), (1, -1, z) and (0, 1, z).
osg::ref_ptr<osg::Geometry> makeTriangleAt(float z);

/// `node` under a transform.
osg::ref_ptr<osg::Node> transformed(osg::Node* node, const osg::Matrixd& matrix);

/// A group of these, in this order.
osg::ref_ptr<osg::Node> groupOf(const std::vector<osg::ref_ptr<osg::Node>>& children);

/// What the visitor finds along a ray; the direction is taken as it is.
std::vector<osg::Vec3d> hitsOf(osg::Node& model, const PickRay& ray);

/// The first of them, if any.
std::optional<osg::Vec3d> firstHit(osg::Node& model, const PickRay& ray);

/// Whether there is any.
bool isHit(osg::Node& model, const PickRay& ray);

/// The ray from one point towards another, its direction of length one.
PickRay rayBetween(const osg::Vec3d& from, const osg::Vec3d& to);

/// The ray that looks along -z onto (x, y), from z = 10.
PickRay rayDown(double x, double y);

/// Whether two points have the same bits.
bool sameBits(const osg::Vec3d& one, const osg::Vec3d& other);

/// Whether `indexed`, the hits that the index finds, pick the same as `walked`, those of the walk:
/// the first has the same bits, and the others are some of those.
bool samePick(const std::vector<osg::Vec3d>& walked, const std::vector<osg::Vec3d>& indexed);

} // namespace orbisk::test
