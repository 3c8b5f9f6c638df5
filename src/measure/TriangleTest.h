#pragma once

#include "measure/PickRay.h"

#include <osg/Vec3d>

#include <optional>

namespace orbisk {

/// Three corners, in world coordinates.
struct Triangle {
    osg::Vec3d a;
    osg::Vec3d b;
    osg::Vec3d c;
};

/// Below this determinant (twice the triangle's area times the cosine between its normal and a
/// direction of length one) a triangle counts as parallel to the ray.
constexpr double smallestDeterminant = 1e-7;

/// Where the line of `ray` meets a triangle, edges included, from either side: the distance in
/// lengths of the direction, negative behind the origin. After Möller and Trumbore, "Fast, Minimum
/// Storage Ray/Triangle Intersection".
///
/// It is one compiled function, not inlined: everyone who asks gets the same bits.
std::optional<double> intersect(const PickRay& ray, const Triangle& triangle);

} // namespace orbisk
