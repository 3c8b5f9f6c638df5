#pragma once

#include <osg/Camera>
#include <osg/Vec3d>

namespace orbisk {

/// A line of sight in world coordinates. The direction is of length one, or zero where the near
/// plane passes through the eye.
struct PickRay {
    osg::Vec3d origin;
    osg::Vec3d direction;
};

/// A position on the canvas in pixels, origin top left.
struct CanvasPosition {
    double x = 0.0;
    double y = 0.0;
    double canvasHeight = 0.0; ///< of the client area, in the same pixels
};

/// Where the camera's eye is, in world coordinates.
osg::Vec3d eyePoint(const osg::Camera& camera);

/// The point of the camera's near plane that is seen at a position of the canvas, in world
/// coordinates. The camera must have a viewport.
osg::Vec3d nearPlanePoint(const osg::Camera& camera, const CanvasPosition& position);

/// The ray from the eye through a position of the canvas. The camera must have a viewport.
PickRay makePickRay(const osg::Camera& camera, const CanvasPosition& position);

} // namespace orbisk
