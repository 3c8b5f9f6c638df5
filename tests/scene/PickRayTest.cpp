#include "measure/PickRay.h"

#include "view/ViewCamera.h"

#include <gtest/gtest.h>
#include <osg/Viewport>

#include <cmath>

namespace orbisk::test {

namespace {

constexpr double pi = 3.14159265358979323846;

osg::ref_ptr<osg::Camera> makeCamera(const osg::Vec3d& eye, const osg::Vec3d& center,
                                     const osg::Vec3d& up, const ViewSize& size = {800, 600}) {
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    setUpCamera(*camera, 30.0, size);
    camera->setViewMatrixAsLookAt(eye, center, up);
    return camera;
}

void expectNear(const osg::Vec3d& actual, const osg::Vec3d& expected, double tolerance) {
    EXPECT_LT((actual - expected).length(), tolerance)
        << actual.x() << ' ' << actual.y() << ' ' << actual.z();
}

} // namespace

TEST(PickRayTest, OriginIsTheEye) {
    const osg::Vec3d eye(4.5e5, 4.5e6, 800);
    const auto camera = makeCamera(eye, {4.5e5, 4.5e6, 100}, {0, 1, 0});
    expectNear(eyePoint(*camera), eye, 1e-6);
    expectNear(makePickRay(*camera, {12, 34, 600}).origin, eye, 1e-6);
}

TEST(PickRayTest, MiddleOfTheCanvasLooksAlongTheView) {
    const auto camera = makeCamera({1, 2, 300}, {1, 2, 3}, {0, 1, 0});
    const PickRay ray = makePickRay(*camera, {400, 300, 600});
    expectNear(ray.direction, {0, 0, -1}, 1e-12);
}

TEST(PickRayTest, DirectionHasLengthOne) {
    const auto camera = makeCamera({100, -50, 70}, {3, 4, 5}, {0, 0, 1});
    for (const double x : {0.0, 133.5, 799.0})
        for (const double y : {0.0, 1.25, 600.0})
            EXPECT_NEAR(makePickRay(*camera, {x, y, 600}).direction.length(), 1.0, 1e-15);
}

TEST(PickRayTest, TopOfTheCanvasIsTheTopOfTheView) {
    const auto camera = makeCamera({0, 0, 100}, {0, 0, 0}, {0, 1, 0});
    const double half = 15.0 * pi / 180.0;
    expectNear(makePickRay(*camera, {400, 0, 600}).direction, {0, std::sin(half), -std::cos(half)},
               1e-12);
    expectNear(makePickRay(*camera, {400, 600, 600}).direction,
               {0, -std::sin(half), -std::cos(half)}, 1e-12);
}

TEST(PickRayTest, LeftOfTheCanvasIsTheLeftOfTheView) {
    const auto camera = makeCamera({0, 0, 100}, {0, 0, 0}, {0, 1, 0});
    const double side = std::tan(15.0 * pi / 180.0) * 800.0 / 600.0;
    osg::Vec3d expected(-side, 0, -1);
    expected.normalize();
    expectNear(makePickRay(*camera, {0, 300, 600}).direction, expected, 1e-12);
}

TEST(PickRayTest, HeightThatDiffersFromTheViewportShiftsTheRay) {
    const auto camera = makeCamera({0, 0, 100}, {0, 0, 0}, {0, 1, 0});
    expectNear(makePickRay(*camera, {400, 320, 620}).direction, {0, 0, -1}, 1e-12);
    EXPECT_EQ(makePickRay(*camera, {400, 0, 300}).direction,
              makePickRay(*camera, {400, 300, 600}).direction);
}

TEST(PickRayTest, ViewportThatStartsElsewhereIsTakenIntoAccount) {
    const auto camera = makeCamera({0, 0, 100}, {0, 0, 0}, {0, 1, 0});
    camera->setViewport(50, 20, 800, 600);
    expectNear(makePickRay(*camera, {450, 280, 600}).direction, {0, 0, -1}, 1e-12);
}

TEST(PickRayTest, NearPointLiesOnTheNearPlane) {
    const auto camera = makeCamera({0, 0, 100}, {0, 0, 0}, {0, 1, 0});
    // The near plane stands ten units before the eye.
    for (const double x : {0.0, 400.0, 700.0})
        for (const double y : {0.0, 300.0, 512.0})
            EXPECT_NEAR(nearPlanePoint(*camera, {x, y, 600}).z(), 90.0, 1e-9);
    expectNear(nearPlanePoint(*camera, {400, 300, 600}), {0, 0, 90}, 1e-9);
}

TEST(PickRayTest, ParallelProjectionStillLooksFromTheEye) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setViewport(0, 0, 200, 200);
    camera->setProjectionMatrixAsOrtho(-10, 10, -10, 10, 1, 100);
    camera->setViewMatrixAsLookAt({0, 0, 50}, {0, 0, 0}, {0, 1, 0});
    expectNear(nearPlanePoint(*camera, {200, 0, 200}), {10, 10, 49}, 1e-9);
    osg::Vec3d expected(10, 10, -1);
    expected.normalize();
    expectNear(makePickRay(*camera, {200, 0, 200}).direction, expected, 1e-9);
}

TEST(PickRayTest, AffineViewIsInvertedAsSuch) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    osg::Matrixd view = osg::Matrixd::rotate(0.3, osg::Vec3d(1, 2, 3)) *
                        osg::Matrixd::scale(2, 3, 4) * osg::Matrixd::translate(5, 6, 7);
    camera->setViewMatrix(view);
    osg::Matrixd inverse;
    ASSERT_TRUE(inverse.invert_4x3(view));
    EXPECT_EQ(eyePoint(*camera), osg::Vec3d() * inverse);
}

TEST(PickRayTest, ViewWithAPerspectivePartIsInvertedWhole) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setViewport(0, 0, 100, 100);
    camera->setProjectionMatrix(osg::Matrixd::identity());
    const osg::Matrixd view =
        osg::Matrixd::lookAt(osg::Vec3d(1, 2, 300), osg::Vec3d(1, 2, 3), osg::Vec3d(0, 1, 0)) *
        osg::Matrixd(1, 0, 0, 0.001, 0, 1, 0, 0.002, 0, 0, 1, 0.003, 5, 6, 7, 2);
    camera->setViewMatrix(view);
    osg::Matrixd whole;
    ASSERT_TRUE(whole.invert_4x4(view));
    EXPECT_EQ(eyePoint(*camera), osg::Vec3d() * whole);
    EXPECT_LT((eyePoint(*camera) * view).length(), 1e-12);
    // What is mapped there and back is where it was.
    const osg::Vec3d window = nearPlanePoint(*camera, {30, 40, 100}) * view *
                              camera->getViewport()->computeWindowMatrix();
    expectNear(window, {30, 60, 0}, 1e-9);
}

TEST(PickRayTest, NearPointAtTheEyeGivesNoDirection) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setViewport(0, 0, 2, 2);
    // The window's corner is the origin of the view: both are the world's origin.
    camera->setViewMatrix(osg::Matrixd::identity());
    camera->setProjectionMatrix(osg::Matrixd::translate(-1, -1, -1));
    EXPECT_EQ(makePickRay(*camera, {0, 2, 2}).direction, osg::Vec3d(0, 0, 0));
}

} // namespace orbisk::test
