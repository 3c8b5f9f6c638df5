// Simple solids for the assembly.
#pragma once

#include <osg/Geometry>
#include <osg/Vec2d>
#include <osg/Vec3d>

#include <vector>

namespace samples {

/// A corner of a lathe profile: distance from the axis and height.
using Profile = std::vector<osg::Vec2d>;

/// A solid of revolution about the z axis. The profile runs upwards along the outside; each of
/// its edges gets its own normals, so that edges look turned rather than moulded.
osg::ref_ptr<osg::Geometry> makeLathe(const Profile& profile, int sides);

/// A box centred at @p center whose edges are bevelled by @p chamfer, if that is not 0.
osg::ref_ptr<osg::Geometry> makeBox(const osg::Vec3d& center, const osg::Vec3d& size,
                                    double chamfer);

} // namespace samples
