#pragma once

#include "measure/PolygonMeasure.h"

#include <osg/Vec3d>

#include <cmath>
#include <vector>

namespace orbisk::test {

using Places = std::vector<osg::Vec3d>;
using Measure = PolygonMeasure;

/// Less than the tolerance, so that it counts as the same place.
constexpr double hair = 0.9e-6;

/// By how much an area on the plane of `at` is larger than seen along z.
inline const double slope = std::sqrt(3.0);

/// A place on the plane x + y + z = 10. Going around counterclockwise in (u, v) is positive, areas
/// are `slope` times those in (u, v).
inline osg::Vec3d at(double u, double v) {
    return {u, v, 10.0 - u - v};
}

/// Convex, counterclockwise, without parallel sides; 7.5 in (u, v).
inline Places quadrilateral() {
    return {at(0, 0), at(4, 0), at(3, 3), at(1, 2)};
}
inline const double quadrilateralArea = 7.5 * slope;

/// An accepted polygon whose closing edge crosses the second edge.
inline Places crossedByClosingEdge() {
    return {at(0, 0), at(4, 1), at(3, 4), at(5, 2)};
}

/// Corners of a roof of 20 m by 30 m on a country's grid, on a plane but for `roughness`.
inline Places roofFarFromTheOrigin(double roughness) {
    const auto corner = [roughness](double x, double y, int side) {
        return osg::Vec3d(5e5 + x, 4e6 + y, 100 + 0.25 * x - 0.125 * y + side * roughness);
    };
    return {corner(-9, -16, 1), corner(11, -14, -1), corner(10, 15, 1), corner(-10, 14, -1)};
}

/// What outputs hold before a call, so that it shows if they are changed.
inline const Places before = {osg::Vec3d(7, 7, 7)};

inline Places reversed(const Places& places) {
    return {places.rbegin(), places.rend()};
}

} // namespace orbisk::test
