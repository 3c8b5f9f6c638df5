#include "roam/RoamPath.h"

#include <osg/Math>
#include <osg/Quat>

namespace orbisk {

namespace {

using Station = osg::AnimationPath::ControlPoint;

constexpr std::size_t fewestPoints = 2;

osg::Quat rotation(double degrees, const osg::Vec3d& axis) {
    osg::Quat turn;
    turn.makeRotate(osg::DegreesToRadians(degrees), axis);
    return turn;
}

osg::Quat orientationOf(const RoamParameters& parameters) {
    // The library's product turns by its left factor first.
    return rotation(parameters.pitch, {1, 0, 0}) * rotation(parameters.roll, {0, 1, 0}) *
           rotation(parameters.yaw, {0, 0, 1});
}

} // namespace

osg::ref_ptr<osg::AnimationPath> buildRoamPath(const TravelPath& points,
                                               const RoamParameters& parameters) {
    osg::ref_ptr<osg::AnimationPath> path = new osg::AnimationPath;
    path->setLoopMode(osg::AnimationPath::LOOP);
    if (points.size() < fewestPoints)
        return path;
    const osg::Quat orientation = orientationOf(parameters);
    const osg::Vec3d offset = orientation * osg::Vec3d(0, 0, parameters.height);
    auto& stations = path->getTimeControlPointMap();
    osg::Vec3d former = points.front() + offset;
    stations[0.0] = Station(former, orientation);
    double time = 0.0;
    for (auto point = points.begin() + 1; point != points.end(); ++point) {
        const osg::Vec3d position = *point + offset;
        // Times only grow, so that the end is the place of each; looking for it would cost more.
        stations.insert_or_assign(stations.end(), time, Station(position, orientation));
        time += (position - former).length() * parameters.secondsPerMetre;
        former = position;
    }
    return path;
}

} // namespace orbisk
