#pragma once

#include <osg/Geometry>
#include <osg/Node>
#include <osg/ref_ptr>

#include <string>

namespace orbisk::test {

/// A small textured model: a bent, chequered square of 100 x 100 units around (10, 20, 30).
osg::ref_ptr<osg::Node> makeModel();

/// Writes it into the working directory. @return its full path.
std::string writeTestModel(const std::string& name = "model.osgb");

/// The first geometry at or below `node`; null if there is none.
osg::Geometry* firstGeometry(osg::Node* node);

/// How `geometry` is drawn: GL_POINT, GL_LINE or GL_FILL; -1 if it does not say.
int polygonModeOf(const osg::Geometry* geometry);

/// Whether `geometry` is drawn with the textures of this unit; false if it does not say.
bool isTextured(const osg::Geometry* geometry, unsigned int unit = 0);

} // namespace orbisk::test
