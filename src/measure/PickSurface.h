#pragma once

#include <osg/Vec3d>

namespace orbisk {

/// What the pointer can pick on. Positions are canvas pixels, origin top left; points are in world
/// coordinates. Main thread.
class PickSurface {
public:
    virtual ~PickSurface() = default;

    /// Gets ready for picks to come. Returns at once; picks are right without it, but slower.
    virtual void prepare() = 0;

    /// The point of the model's surface at a position. Throws `std::out_of_range` on a model whose
    /// primitives go beyond their indices.
    /// @param point is left as it was where the model is not hit.
    /// @return whether the model is hit.
    virtual bool pickPoint(double x, double y, osg::Vec3d& point) = 0;

    /// The point of the camera's near plane at a position.
    virtual osg::Vec3d nearPoint(double x, double y) const = 0;
};

} // namespace orbisk
