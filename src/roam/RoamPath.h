#pragma once

#include "measure/MeasurementSet.h"
#include "settings/RoamParameters.h"

#include <osg/AnimationPath>
#include <osg/ref_ptr>

namespace orbisk {

/// The way a roam's camera takes over the picked points: one looping path, timed in seconds from
/// zero on, with positions in the world frame and one orientation for the whole flight. Pitch
/// (about x), roll (about y) and yaw (about z) turn the camera in this order, and with it the
/// upright offset by which it flies above the points.
///
/// Each point's time is the one at which its predecessor should be reached: the flight begins at
/// the second point and comes to every later one a segment early. Of points that fall on one time
/// the last stays. Fewer than two points give an empty path. Takes linear time.
osg::ref_ptr<osg::AnimationPath> buildRoamPath(const TravelPath& points,
                                               const RoamParameters& parameters);

} // namespace orbisk
