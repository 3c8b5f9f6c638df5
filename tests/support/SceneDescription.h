#pragma once

#include <osg/Node>
#include <osg/Vec3d>

#include <string>
#include <vector>

namespace orbisk::test {

/// Describes all that can be seen of a scene without transforms, digit by digit: for each geometry
/// its name, its state, and its triangles, segments and points in their order, with what stands at
/// each corner. Two scenes of the same description look alike, and are picked alike, however their
/// primitives are stored; where that matters too, there is `DrawnModel`.
std::string describeScene(osg::Node& scene);

/// The triangles of such a scene, three corners each.
std::vector<osg::Vec3d> trianglesOf(osg::Node& scene);

/// The sum of the areas of a scene's triangles.
double areaOf(osg::Node& scene);

} // namespace orbisk::test
