#include "view/ViewCamera.h"

#include <gtest/gtest.h>
#include <osg/StateSet>
#include <osg/Viewport>

#include <cmath>

namespace orbisk::test {

namespace {

/// Opens the manipulator's flags, which it shows to derived classes only.
struct Flags : osgGA::StandardManipulator {
    static int of(const osgGA::StandardManipulator& manipulator) {
        return manipulator.*(&Flags::_flags);
    }
};

} // namespace

TEST(ViewCameraTest, PerspectiveHasTheFieldOfViewTheSizeAndFixedPlanes) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 42.5, {640, 400});
    double fovy = 0;
    double aspect = 0;
    double nearPlane = 0;
    double farPlane = 0;
    ASSERT_TRUE(camera->getProjectionMatrixAsPerspective(fovy, aspect, nearPlane, farPlane));
    EXPECT_NEAR(fovy, 42.5, 1e-9);
    EXPECT_NEAR(aspect, 1.6, 1e-12);
    EXPECT_NEAR(nearPlane, 10.0, 1e-9);
    // With planes so far apart the matrix no longer holds the far one: it is compared as a whole.
    EXPECT_EQ(camera->getProjectionMatrix(), osg::Matrixd::perspective(42.5, 1.6, 10.0, 1e24));
}

TEST(ViewCameraTest, AspectIsNoWholeNumber) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, {1001, 500});
    EXPECT_EQ(camera->getProjectionMatrix(), osg::Matrixd::perspective(30.0, 2.002, 10.0, 1e24));
}

TEST(ViewCameraTest, ViewportCoversTheSize) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, {320, 241});
    const osg::Viewport* viewport = camera->getViewport();
    ASSERT_NE(viewport, nullptr);
    EXPECT_EQ(viewport->x(), 0.0);
    EXPECT_EQ(viewport->y(), 0.0);
    EXPECT_EQ(viewport->width(), 320.0);
    EXPECT_EQ(viewport->height(), 241.0);
}

TEST(ViewCameraTest, BackgroundIsLightGrey) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, {320, 240});
    EXPECT_EQ(camera->getClearColor(), osg::Vec4(0.8f, 0.8f, 0.8f, 0.1f));
}

TEST(ViewCameraTest, LightsAreOffUnlessTheSceneTurnsThemOn) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, {320, 240});
    const osg::StateSet* state = camera->getStateSet();
    ASSERT_NE(state, nullptr);
    const osg::StateSet::ModeList wanted{{GL_LIGHTING, osg::StateAttribute::OFF},
                                         {GL_LIGHT0, osg::StateAttribute::OFF}};
    EXPECT_EQ(state->getModeList(), wanted);
}

TEST(ViewCameraTest, CameraKeepsItsStateSet) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    const osg::ref_ptr<osg::StateSet> state = camera->getOrCreateStateSet();
    setUpCamera(*camera, 30.0, {320, 240});
    EXPECT_EQ(camera->getStateSet(), state);
}

TEST(ViewCameraTest, TrackballFollowsModelSizeAndWheelOnly) {
    EXPECT_EQ(Flags::of(*makeTrackball()), 5);
}

TEST(ViewCameraTest, EachTrackballIsANewOne) {
    EXPECT_NE(makeTrackball(), makeTrackball());
}

TEST(ViewCameraTest, HomeIsTakenOverAndNeverComputed) {
    const osg::ref_ptr<osgGA::TrackballManipulator> trackball = makeTrackball();
    trackball->setAutoComputeHomePosition(true);
    setHome(*trackball, {{1, 2, 300}, {1, 2, 3}, {0, 1, 0}});
    osg::Vec3d eye;
    osg::Vec3d center;
    osg::Vec3d up;
    trackball->getHomePosition(eye, center, up);
    EXPECT_EQ(eye, osg::Vec3d(1, 2, 300));
    EXPECT_EQ(center, osg::Vec3d(1, 2, 3));
    EXPECT_EQ(up, osg::Vec3d(0, 1, 0));
    EXPECT_FALSE(trackball->getAutoComputeHomePosition());
}

TEST(ViewCameraTest, GoingHomeLooksFromTheHomeEye) {
    const osg::ref_ptr<osgGA::TrackballManipulator> trackball = makeTrackball();
    setHome(*trackball, {{4.5e5, 4.5e6, 1000}, {4.5e5, 4.5e6, 100}, {0, 1, 0}});
    trackball->home(0.0);
    const osg::Matrixd view = trackball->getInverseMatrix();
    EXPECT_LT((osg::Vec3d(4.5e5, 4.5e6, 1000) * view).length(), 1e-6);
    EXPECT_LT((osg::Vec3d(4.5e5, 4.5e6, 100) * view - osg::Vec3d(0, 0, -900)).length(), 1e-6);
    EXPECT_LT((osg::Vec3d(4.5e5, 4.5e6 + 5, 100) * view - osg::Vec3d(0, 5, -900)).length(), 1e-6);
}

} // namespace orbisk::test
