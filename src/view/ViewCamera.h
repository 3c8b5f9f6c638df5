#pragma once

#include <osg/Camera>
#include <osg/Vec3d>
#include <osgGA/TrackballManipulator>

namespace orbisk {

/// Size of the view in physical pixels.
struct ViewSize {
    int w = 0;
    int h = 0;
};

/// Where the camera stands at home; world frame.
struct HomeView {
    osg::Vec3d eye;
    osg::Vec3d center;
    osg::Vec3d up;
};

/// Gives a view's camera its perspective (vertical field of view in degrees), viewport, background
/// and light defaults.
void setUpCamera(osg::Camera& camera, double fovy, const ViewSize& size);

/// The manipulator for normal viewing: follows the model's size and the wheel, and never works out
/// a home of its own.
osg::ref_ptr<osgGA::TrackballManipulator> makeTrackball();

/// Makes `home` the place to which the manipulator's home operation goes.
void setHome(osgGA::CameraManipulator& manipulator, const HomeView& home);

} // namespace orbisk
