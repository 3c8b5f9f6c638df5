#pragma once

#include <osg/Vec2d>

namespace orbisk {

/// Twice the signed area of the triangle a, b, c: positive where it turns to the left.
inline double turn(const osg::Vec2d& a, const osg::Vec2d& b, const osg::Vec2d& c) {
    return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

} // namespace orbisk
