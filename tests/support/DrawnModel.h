#pragma once

#include <osg/Node>
#include <osg/Vec2>
#include <osg/Vec3d>
#include <osg/Vec4>

#include <array>
#include <string>
#include <vector>

namespace orbisk::test {

/// A vertex as it is drawn; what a geometry has not stays at zero.
struct DrawnVertex {
    osg::Vec3d place;  ///< world frame
    osg::Vec3d normal; ///< as the geometry has it
    osg::Vec4 colour;
    osg::Vec2 textureCoordinates;
};

bool operator==(const DrawnVertex& a, const DrawnVertex& b);
bool operator<(const DrawnVertex& a, const DrawnVertex& b);
std::ostream& operator<<(std::ostream& out, const DrawnVertex& vertex);

using DrawnTriangle = std::array<DrawnVertex, 3>;

/// What a model shows, in the order of drawing, and how it is stored.
struct DrawnModel {
    std::vector<DrawnTriangle> triangles; ///< those of quadrangles as OpenGL cuts them
    std::vector<DrawnVertex> points;
    std::vector<std::string> nodes; ///< a line for each node, geometry and state set
};

/// Goes through all of a model. Fails the test where an index lies beyond the vertices, or an array
/// has another length.
DrawnModel drawnModel(osg::Node& model);

/// The first thing in which two models differ, in words; empty where they don't.
std::string difference(const DrawnModel& a, const DrawnModel& b);

/// The model with its triangles in an order that depends on nothing else, each begun with its least
/// corner.
DrawnModel inAnyOrder(DrawnModel model);

/// Whether every vertex of a model is finite and every index within them: it can be drawn and
/// picked.
bool isSafe(osg::Node& model);

} // namespace orbisk::test
