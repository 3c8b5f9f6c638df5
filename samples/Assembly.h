// A total station on its tripod, built as nested moving parts.
#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

namespace samples {

/// The instrument stands over the origin, z up, in metres. Turning the node "Alidade" turns the
/// instrument, turning "Telescope" tilts its line of sight, moving "LegExtension" lengthens a leg.
osg::ref_ptr<osg::Node> makeTotalStation();

} // namespace samples
