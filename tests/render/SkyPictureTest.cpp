#include "support/OffScreenView.h"
#include "support/Pictures.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/SceneRoot.h"

#include <gtest/gtest.h>
#include <osg/Math>

#include <algorithm>
#include <cmath>
#include <vector>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr int width = 320;
constexpr int height = 240;
constexpr double fovy = 50.0; ///< degrees
constexpr float barely = 0.03f;

osg::Vec3d direction(double azimuthDegrees, double elevationDegrees) {
    const double azimuth = osg::DegreesToRadians(azimuthDegrees);
    const double elevation = osg::DegreesToRadians(elevationDegrees);
    return {std::cos(elevation) * std::cos(azimuth), std::cos(elevation) * std::sin(azimuth),
            std::sin(elevation)};
}

/// How much two neighbouring columns, or rows, of a picture differ from each other on average.
float step(const osg::Image& picture, bool columns, int first) {
    const int length = columns ? picture.t() : picture.s();
    float sum = 0.0f;
    for (int i = 0; i < length; ++i) {
        const osg::Vec3 a = columns ? pixel(picture, first, i) : pixel(picture, i, first);
        const osg::Vec3 b = columns ? pixel(picture, first + 1, i) : pixel(picture, i, first + 1);
        sum += (a - b).length();
    }
    return sum / static_cast<float>(length);
}

/// Whether a line in the middle of the picture stands out from what lies around it.
testing::AssertionResult isSmoothInTheMiddle(const osg::Image& picture, bool columns) {
    constexpr int reach = 8; ///< pixels within which the border of two faces lies
    const int middle = (columns ? picture.s() : picture.t()) / 2;
    float atBorder = 0.0f;
    std::vector<float> around;
    for (int i = middle - 5 * reach; i < middle + 5 * reach; ++i) {
        const float here = step(picture, columns, i);
        if (std::abs(i - middle) <= reach)
            atBorder = std::max(atBorder, here);
        else
            around.push_back(here);
    }
    const float greatest = *std::max_element(around.begin(), around.end());
    if (atBorder <= 1.5f * greatest + 0.01f)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "a step of " << atBorder << " where at most " << greatest << " is around it";
}

/// The program's scene around a speck of a model, seen from beside it in any direction.
class SkyPictureTest : public testing::Test {
protected:
    SkyPictureTest() : m_view(width, height, fovy) {
        fs::create_symlink(ORBISK_STAGE_DIR "/image", "image");
        m_view.setScene(m_scene.root());
        m_scene.rebuild(*makeQuadGeode(0.001f), m_view.camera(), true);
    }

    ~SkyPictureTest() override { m_scene.clear(); }

    osg::ref_ptr<osg::Image> look(double azimuth, double elevation) {
        // On the level of the sky's own horizon and so far out that the speck is behind the eye.
        const osg::Vec3d eye = direction(azimuth, 0.0) * 5.0;
        m_view.camera().setViewMatrixAsLookAt(eye, eye + direction(azimuth, elevation),
                                              osg::Vec3d(0, 0, 1));
        return m_view.draw();
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    SceneRoot m_scene;
    OffScreenView m_view;
};

const PictureArea all{0, 0, width, height};
const PictureArea upperBand{0, height / 2 + 20, width, 60};
const PictureArea lowerBand{0, height / 2 - 80, width, 60};

} // namespace

TEST_F(SkyPictureTest, HorizonIsLevelInEachDirection) {
    for (const double azimuth : {0.0, 90.0, 180.0, 270.0}) {
        SCOPED_TRACE(azimuth);
        const osg::ref_ptr<osg::Image> picture = look(azimuth, 0.0);
        const osg::Vec3 above = meanColour(*picture, upperBand);
        const osg::Vec3 below = meanColour(*picture, lowerBand);
        EXPECT_GT(above.z(), below.z() + barely);
        EXPECT_GT(above.z() - above.x(), below.z() - below.x() + barely);
        const osg::Vec3 left = meanColour(*picture, {0, height / 2 - 80, width / 4, 160});
        const osg::Vec3 right =
            meanColour(*picture, {width * 3 / 4, height / 2 - 80, width / 4, 160});
        EXPECT_LT((left - right).length(), 0.15f);
    }
}

TEST_F(SkyPictureTest, SkyIsAboveAndGroundBelow) {
    for (const double azimuth : {0.0, 90.0, 180.0, 270.0}) {
        SCOPED_TRACE(azimuth);
        const osg::Vec3 above = meanColour(*look(azimuth, 45.0), all);
        const osg::Vec3 below = meanColour(*look(azimuth, -45.0), all);
        EXPECT_GT(above.z(), above.x() + barely) << "the sky is not blue";
        EXPECT_GT(above.z() - above.x(), below.z() - below.x() + barely);
        EXPECT_GT(above.z(), below.z() + barely);
    }
}

TEST_F(SkyPictureTest, NothingOfTheBackgroundIsLeft) {
    // The camera's own colour, made one that no sky has.
    m_view.camera().setClearColor(osg::Vec4(1, 0, 1, 1));
    for (double azimuth = 0.0; azimuth < 360.0; azimuth += 45.0)
        for (const double elevation : {-80.0, -40.0, 0.0, 40.0, 80.0}) {
            const osg::ref_ptr<osg::Image> picture = look(azimuth, elevation);
            EXPECT_EQ(countPixels(*picture,
                                  [](const osg::Vec3& colour) {
                                      return colour.x() > 0.9f && colour.y() < 0.1f;
                                  }),
                      0)
                << azimuth << " " << elevation;
        }
}

TEST_F(SkyPictureTest, UprightBordersOfTheFacesDoNotShow) {
    for (const double azimuth : {45.0, 135.0, 225.0, 315.0}) {
        EXPECT_TRUE(isSmoothInTheMiddle(*look(azimuth, 0.0), true)) << azimuth;
        EXPECT_TRUE(isSmoothInTheMiddle(*look(azimuth, 20.0), true)) << azimuth;
        EXPECT_TRUE(isSmoothInTheMiddle(*look(azimuth, -20.0), true)) << azimuth;
    }
}

TEST_F(SkyPictureTest, BordersToTheTopAndTheBottomDoNotShow) {
    for (const double azimuth : {0.0, 90.0, 180.0, 270.0}) {
        EXPECT_TRUE(isSmoothInTheMiddle(*look(azimuth, 45.0), false)) << azimuth;
        EXPECT_TRUE(isSmoothInTheMiddle(*look(azimuth, -45.0), false)) << azimuth;
    }
}

TEST_F(SkyPictureTest, SkySurroundsAnEyeAnywhere) {
    m_view.camera().setClearColor(osg::Vec4(1, 0, 1, 1));
    for (const osg::Vec3d& eye :
         {osg::Vec3d(0, 0, 0.5), osg::Vec3d(1e4, 0, 0), osg::Vec3d(0, -3, 1e6)}) {
        m_view.camera().setViewMatrixAsLookAt(eye, eye + osg::Vec3d(0, 1, 0.3),
                                              osg::Vec3d(0, 0, 1));
        const osg::ref_ptr<osg::Image> picture = m_view.draw();
        EXPECT_EQ(countPixels(*picture,
                              [](const osg::Vec3& colour) {
                                  return colour.x() > 0.9f && colour.y() < 0.1f;
                              }),
                  0)
            << eye.x() << " " << eye.y() << " " << eye.z();
    }
}

TEST_F(SkyPictureTest, LightsDoNotChangeTheSky) {
    // Both lights reach the sky as well, were it lit.
    osg::StateSet* state = m_scene.root()->getOrCreateStateSet();
    for (const auto mode : {GL_LIGHTING, GL_LIGHT0, GL_LIGHT1})
        state->setMode(static_cast<osg::StateAttribute::GLMode>(mode), osg::StateAttribute::ON);
    const osg::ref_ptr<osg::Image> lit = look(30.0, 10.0);
    m_scene.modelSwitch()->setValue(SceneRoot::upperLight, false);
    m_scene.modelSwitch()->setValue(SceneRoot::lowerLight, false);
    const osg::ref_ptr<osg::Image> unlit = look(30.0, 10.0);
    EXPECT_LT((meanColour(*lit, all) - meanColour(*unlit, all)).length(), 0.001f);
}

TEST_F(SkyPictureTest, SkyCanBeSwitchedOffAndOn) {
    const osg::Vec3 sky = meanColour(*look(30.0, 30.0), all);
    m_scene.setSkyShown(false);
    EXPECT_LT((meanColour(*look(30.0, 30.0), all) - osg::Vec3(0.8f, 0.8f, 0.8f)).length(), 0.01f);
    m_scene.setSkyShown(true);
    EXPECT_LT((meanColour(*look(30.0, 30.0), all) - sky).length(), 0.001f);
    EXPECT_GT((sky - osg::Vec3(0.8f, 0.8f, 0.8f)).length(), barely);
}

} // namespace orbisk::test
