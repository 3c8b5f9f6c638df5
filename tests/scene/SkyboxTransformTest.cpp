#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/Skybox.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/Matrixd>

#include <array>
#include <cfloat>
#include <cmath>
#include <random>
#include <utility>

namespace orbisk::test {

namespace {

using Row = std::array<long double, 8>;

/// The origin taken back through a view matrix, worked out with more digits than the program has.
osg::Vec3d eyeOf(const osg::Matrixd& view) {
    std::array<Row, 4> rows{};
    for (unsigned int r = 0; r < 4; ++r)
        for (unsigned int c = 0; c < 4; ++c) {
            rows[r][c] = static_cast<long double>(view(static_cast<int>(r), static_cast<int>(c)));
            rows[r][c + 4] = r == c ? 1.0L : 0.0L;
        }
    for (unsigned int pivot = 0; pivot < 4; ++pivot) {
        for (unsigned int r = pivot + 1; r < 4; ++r)
            if (std::fabs(rows[r][pivot]) > std::fabs(rows[pivot][pivot]))
                std::swap(rows[r], rows[pivot]);
        const long double divisor = rows[pivot][pivot];
        for (long double& value : rows[pivot])
            value /= divisor;
        for (unsigned int r = 0; r < 4; ++r) {
            const long double factor = rows[r][pivot];
            if (r != pivot)
                for (unsigned int c = 0; c < 8; ++c)
                    rows[r][c] -= factor * rows[pivot][c];
        }
    }
    const Row& last = rows[3];
    return {static_cast<double>(last[4] / last[7]), static_cast<double>(last[5] / last[7]),
            static_cast<double>(last[6] / last[7])};
}

/// Where the unit sphere's point `p` belongs: scaled, turned about x from y to -z, put in place.
osg::Vec3d placed(const osg::Vec3d& p, double scale, const osg::Vec3d& position) {
    return {p.x() * scale + position.x(), p.z() * scale + position.y(),
            -p.y() * scale + position.z()};
}

struct Sky {
    explicit Sky(const osg::Vec3d& position) : camera(new osg::Camera), place(position) {
        SkyboxPlacement placement;
        copyPlacement(placement, camera, position);
        transform = buildSkybox(placement);
    }

    osg::Matrixd matrixFor(const osg::Matrixd& view) {
        camera->setViewMatrix(view);
        frames.update(*transform);
        return transform->getMatrix();
    }

    /// Checks the matrix for one camera; everything is compared relative to the sky's size.
    void check(const osg::Matrixd& view) {
        const osg::Matrixd matrix = matrixFor(view);
        const double distance = (eyeOf(view) - place).length();
        const double scale = 10.0 * distance;
        const double tolerance = 1e-6 * scale + 1e-9 * place.length();
        for (const osg::Vec3d& p : {osg::Vec3d(), osg::Vec3d(1, 0, 0), osg::Vec3d(0, 1, 0),
                                    osg::Vec3d(0, 0, 1), osg::Vec3d(0.3, -0.5, 0.8)})
            EXPECT_LT((p * matrix - placed(p, scale, place)).length(), tolerance);
        EXPECT_EQ(matrix(0, 3), 0.0);
        EXPECT_EQ(matrix(3, 3), 1.0);
    }

    osg::ref_ptr<osg::Camera> camera;
    osg::Vec3d place;
    osg::ref_ptr<osg::MatrixTransform> transform;
    Frames frames;
};

class SkyboxTransformTest : public testing::Test {
protected:
    double number(double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(m_random);
    }

    osg::Vec3d vector(double size) {
        return {number(-size, size), number(-size, size), number(-size, size)};
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;

private:
    std::mt19937 m_random{20240607};
};

} // namespace

TEST_F(SkyboxTransformTest, SurroundsTheEyeAtTenTimesItsDistance) {
    Sky sky(osg::Vec3d(100, 200, 300));
    const osg::Matrixd matrix = sky.matrixFor(osg::Matrixd::lookAt(
        osg::Vec3d(100, 200, 350), osg::Vec3d(100, 200, 300), osg::Vec3d(0, 1, 0)));
    // The sphere's +y points down in the world, its radius is ten times the eye's distance of 50.
    EXPECT_LT((osg::Vec3d(0, 1, 0) * matrix - osg::Vec3d(100, 200, -200)).length(), 1e-3);
    EXPECT_LT((osg::Vec3d(0, 0, 1) * matrix - osg::Vec3d(100, 700, 300)).length(), 1e-3);
    EXPECT_LT((osg::Vec3d(1, 0, 0) * matrix - osg::Vec3d(600, 200, 300)).length(), 1e-3);
}

TEST_F(SkyboxTransformTest, FollowsCamerasAnywhere) {
    for (int i = 0; i < 400; ++i) {
        Sky sky(vector(100.0));
        const osg::Vec3d eye = vector(1000.0);
        sky.check(osg::Matrixd::lookAt(eye, eye + vector(10.0), vector(1.0)));
    }
}

TEST_F(SkyboxTransformTest, FollowsCamerasOverSurveyCoordinates) {
    for (int i = 0; i < 400; ++i) {
        const osg::Vec3d place(number(2e5, 8e5), number(0.0, 9e6), number(0.0, 3000.0));
        Sky sky(place);
        const osg::Vec3d eye = place + vector(500.0);
        sky.check(osg::Matrixd::lookAt(eye, place, osg::Vec3d(0.1, 1, 0.2)));
    }
}

TEST_F(SkyboxTransformTest, FollowsViewsThatAreNotAffine) {
    for (int i = 0; i < 200; ++i) {
        Sky sky(vector(100.0));
        const osg::Vec3d eye = vector(1000.0);
        osg::Matrixd view = osg::Matrixd::lookAt(eye, eye + vector(10.0), vector(1.0));
        view(0, 3) = number(-0.2, 0.2);
        view(1, 3) = number(-0.2, 0.2);
        view(2, 3) = number(-0.2, 0.2);
        view(3, 3) = number(0.5, 2.0);
        const osg::Vec3d found = eyeOf(view);
        if (found.length() < 1e6)
            sky.check(view);
    }
}

TEST_F(SkyboxTransformTest, FollowsScaledViews) {
    Sky sky(osg::Vec3d(10, 20, 30));
    sky.check(osg::Matrixd::translate(-50, -60, -70) * osg::Matrixd::scale(2, 3, 4) *
              osg::Matrixd::rotate(0.7, osg::Vec3d(1, 1, 0)));
}

TEST_F(SkyboxTransformTest, DistanceIsInSinglePrecision) {
    Sky sky(osg::Vec3d(0, 0, 0));
    const osg::Vec3d eye(1.0 / 3.0, 1000.0 / 7.0, 0.1);
    const osg::Matrixd matrix =
        sky.matrixFor(osg::Matrixd::lookAt(eye, osg::Vec3d(), osg::Vec3d(0, 0, 1)));
    const double scale = matrix(0, 0);
    const auto single = static_cast<double>(static_cast<float>(scale));
    EXPECT_NEAR(scale, 10.0 * eye.length(), 1e-6 * scale);
    EXPECT_NE(scale, 10.0 * eye.length());
    // Ten times a float is a float again, or at most a product that a double holds exactly.
    const auto distance = static_cast<double>(static_cast<float>(eye.length()));
    EXPECT_TRUE(scale == single || scale == 10.0 * distance) << scale;
}

TEST_F(SkyboxTransformTest, FollowsTheCameraFrameByFrame) {
    Sky sky(osg::Vec3d(5, 5, 5));
    sky.check(osg::Matrixd::translate(-105, -5, -5));
    sky.check(osg::Matrixd::translate(-5, -7, -5));
    sky.check(osg::Matrixd::translate(-5, -5, -5e6));
}

TEST_F(SkyboxTransformTest, BoundGrowsWithTheSky) {
    Sky sky(osg::Vec3d(0, 0, 0));
    sky.matrixFor(osg::Matrixd::translate(0, 0, -1));
    const float near = sky.transform->getBound().radius();
    EXPECT_GE(near, 10.0f);
    sky.matrixFor(osg::Matrixd::translate(0, 0, -100));
    EXPECT_NEAR(static_cast<double>(sky.transform->getBound().radius() / near), 100.0, 0.01);
}

TEST_F(SkyboxTransformTest, TraversalGoesOnBelow) {
    Sky sky(osg::Vec3d(0, 0, 0));
    const osg::ref_ptr<CountingCallback> below = new CountingCallback;
    sky.transform->getChild(0)->setUpdateCallback(below);
    sky.frames.update(*sky.transform, 3);
    EXPECT_EQ(below->calls, 3);
}

TEST_F(SkyboxTransformTest, PlacementIsCopied) {
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    camera->setViewMatrix(osg::Matrixd::translate(0, 0, -20));
    SkyboxPlacement placement;
    copyPlacement(placement, camera, osg::Vec3d(0, 0, 10));
    const osg::ref_ptr<osg::MatrixTransform> sky = buildSkybox(placement);
    const osg::ref_ptr<osg::Camera> other = new osg::Camera;
    copyPlacement(placement, other, osg::Vec3d(7, 7, 7));
    Frames().update(*sky);
    EXPECT_EQ(sky->getMatrix().getTrans(), osg::Vec3d(0, 0, 10));
    EXPECT_NEAR(sky->getMatrix()(0, 0), 100.0, 1e-4);
}

TEST_F(SkyboxTransformTest, CopyingAPlacementReleasesTheFormerCamera) {
    osg::ref_ptr<osg::Camera> former = new osg::Camera;
    const osg::ref_ptr<osg::Camera> next = new osg::Camera;
    SkyboxPlacement placement;
    copyPlacement(placement, former, osg::Vec3d(1, 2, 3));
    EXPECT_EQ(former->referenceCount(), 2);
    EXPECT_EQ(placement.position, osg::Vec3d(1, 2, 3));
    copyPlacement(placement, next, osg::Vec3d(4, 5, 6));
    EXPECT_EQ(former->referenceCount(), 1);
    EXPECT_EQ(next->referenceCount(), 2);
    EXPECT_EQ(placement.camera, next);
    EXPECT_EQ(placement.position, osg::Vec3d(4, 5, 6));
    copyPlacement(placement, next, osg::Vec3d(4, 5, 6));
    EXPECT_EQ(next->referenceCount(), 2);
}

} // namespace orbisk::test
