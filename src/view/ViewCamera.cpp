#include "view/ViewCamera.h"

#include <osg/StateSet>
#include <osg/Viewport>

namespace orbisk {

namespace {

constexpr double nearPlane = 10.0;
constexpr double farPlane = 1e24;
const osg::Vec4 backgroundColour(0.8f, 0.8f, 0.8f, 0.1f);

} // namespace

void setUpCamera(osg::Camera& camera, double fovy, const ViewSize& size) {
    camera.setProjectionMatrixAsPerspective(fovy, static_cast<double>(size.w) / size.h, nearPlane,
                                            farPlane);
    camera.setViewport(0, 0, size.w, size.h);
    camera.setClearColor(backgroundColour);
    osg::StateSet* state = camera.getOrCreateStateSet();
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    state->setMode(GL_LIGHT0, osg::StateAttribute::OFF);
}

osg::ref_ptr<osgGA::TrackballManipulator> makeTrackball() {
    return new osgGA::TrackballManipulator(osgGA::StandardManipulator::UPDATE_MODEL_SIZE |
                                           osgGA::StandardManipulator::PROCESS_MOUSE_WHEEL);
}

void setHome(osgGA::CameraManipulator& manipulator, const HomeView& home) {
    manipulator.setHomePosition(home.eye, home.center, home.up, false);
}

} // namespace orbisk
