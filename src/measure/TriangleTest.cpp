#include "measure/TriangleTest.h"

namespace orbisk {

std::optional<double> intersect(const PickRay& ray, const Triangle& triangle) {
    const osg::Vec3d edge1 = triangle.b - triangle.a;
    const osg::Vec3d edge2 = triangle.c - triangle.a;
    const osg::Vec3d p = ray.direction ^ edge2;
    double determinant = p * edge1;
    osg::Vec3d toOrigin;
    if (determinant > 0.0) {
        toOrigin = ray.origin - triangle.a;
    } else {
        toOrigin = triangle.a - ray.origin;
        determinant = -determinant;
    }
    if (determinant < smallestDeterminant)
        return std::nullopt;
    const double u = (p * toOrigin) / determinant;
    if (u < 0.0)
        return std::nullopt;
    const osg::Vec3d q = toOrigin ^ edge1;
    const double v = (q * ray.direction) / determinant;
    if (v < 0.0 || u + v > 1.0)
        return std::nullopt;
    return (q * edge2) / determinant;
}

} // namespace orbisk
