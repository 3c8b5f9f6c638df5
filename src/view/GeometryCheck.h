#pragma once

#include <osg/Geometry>

namespace orbisk {

/// Whether a coordinate can be used: it is finite, and so is its square in single precision, of
/// which lengths are made.
bool isUsableCoordinate(double coordinate);

/// Makes a geometry safe to draw, to measure and to pick, as `checkModel` tells. One without
/// vertices keeps no primitive sets.
void checkGeometry(osg::Geometry& geometry);

} // namespace orbisk
