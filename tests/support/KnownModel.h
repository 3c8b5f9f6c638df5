#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <string>

namespace orbisk::test {

/// A hilly square of 40 m with a texture of red and green fields, and a blue untextured block
/// on it. Its colours, edges and corners tell the display modes apart.
osg::ref_ptr<osg::Node> makeKnownModel();

/// Writes that model to `file`; its texture is inside.
void writeKnownModel(const std::string& file);

} // namespace orbisk::test
