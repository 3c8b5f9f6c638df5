#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

namespace orbisk {

/// A model whose vertices are all in single precision: `model` itself where they are, else a copy
/// that shares everything but its nodes and those vertices. Many of the library's writers take any
/// vertices for such and crash on others, or write numbers that have nothing to do with them.
osg::ref_ptr<osg::Node> inSinglePrecision(osg::Node& model);

} // namespace orbisk
