#include "view/Skybox.h"

#include <gtest/gtest.h>
#include <osgUtil/UpdateVisitor>

namespace orbisk::test {

TEST(SkyboxTest, SurroundsTheEyeAtTenTimesItsDistance) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    const osg::Vec3d position(100, 200, 300);
    camera->setViewMatrixAsLookAt(osg::Vec3d(100, 200, 350), position, osg::Vec3d(0, 1, 0));
    SkyboxPlacement placement;
    copyPlacement(placement, camera, position);
    const osg::ref_ptr<osg::MatrixTransform> sky = buildSkybox(placement);
    osgUtil::UpdateVisitor update;
    sky->accept(update);
    // The sphere's +y points down in the world, its radius is ten times the eye's distance of 50.
    const osg::Vec3d below = osg::Vec3d(0, 1, 0) * sky->getMatrix();
    EXPECT_NEAR((below - osg::Vec3d(100, 200, -200)).length(), 0.0, 1e-3);
    const osg::Vec3d north = osg::Vec3d(0, 0, 1) * sky->getMatrix();
    EXPECT_NEAR((north - osg::Vec3d(100, 700, 300)).length(), 0.0, 1e-3);
}

} // namespace orbisk::test
