#include "measure/PickRay.h"

#include <osg/Matrixd>
#include <osg/Viewport>

#include <cassert>

namespace orbisk {

osg::Vec3d eyePoint(const osg::Camera& camera) {
    return osg::Vec3d() * osg::Matrixd::inverse(camera.getViewMatrix());
}

osg::Vec3d nearPlanePoint(const osg::Camera& camera, const CanvasPosition& position) {
    assert(camera.getViewport());
    const osg::Matrixd window = camera.getViewport()->computeWindowMatrix();
    const osg::Matrixd toWindow = camera.getViewMatrix() * camera.getProjectionMatrix() * window;
    return osg::Vec3d(position.x, position.canvasHeight - position.y, 0.0) *
           osg::Matrixd::inverse(toWindow);
}

PickRay makePickRay(const osg::Camera& camera, const CanvasPosition& position) {
    PickRay ray{eyePoint(camera), nearPlanePoint(camera, position)};
    ray.direction -= ray.origin;
    ray.direction.normalize();
    return ray;
}

} // namespace orbisk
