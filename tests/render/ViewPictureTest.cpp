#include "support/KnownModel.h"
#include "support/Pictures.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/Screenshot.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr float clearlyColoured = 0.25f;

bool isBackground(const osg::Vec3& colour) {
    return (colour - osg::Vec3(0.8f, 0.8f, 0.8f)).length() < 0.01f;
}

class ViewPictureTest : public testing::Test {
protected:
    ViewPictureTest() {
        writeKnownModel("model.osgb");
        // Narrow, so that the model fills most of the picture.
        m_settings.fovy = 14.0;
        m_request.file = "picture.png";
        m_request.width = 320;
        m_request.height = 240;
    }

    osg::ref_ptr<osg::Image> take(DisplayMode mode) {
        m_request.mode = mode;
        const auto error = takeScreenshot(m_request, "model.osgb", m_settings);
        EXPECT_FALSE(error) << *error;
        return readPicture("picture.png");
    }

    void putSky() { fs::create_symlink(ORBISK_STAGE_DIR "/image", "image"); }

    static int shown(const osg::Image& picture) {
        return countPixels(picture, [](const osg::Vec3& colour) { return !isBackground(colour); });
    }

    static int coloured(const osg::Image& picture) {
        return countPixels(picture, [](const osg::Vec3& colour) {
            return colourfulness(colour) > clearlyColoured;
        });
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    ScreenshotRequest m_request;
    AppSettings m_settings;
};

} // namespace

TEST_F(ViewPictureTest, AsLoadedIsFilledAndTextured) {
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(shown(*picture), 15000);
    EXPECT_GT(coloured(*picture), shown(*picture) * 8 / 10);
    EXPECT_TRUE(looksLikeReference(*picture, "as-loaded"));
}

TEST_F(ViewPictureTest, PointCloudIsItsCorners) {
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::PointCloud);
    ASSERT_NE(picture, nullptr);
    // The model has 121 corners and 4 of its block.
    EXPECT_GT(shown(*picture), 60);
    EXPECT_LE(shown(*picture), 2 * 125);
    EXPECT_TRUE(looksLikeReference(*picture, "points"));
}

TEST_F(ViewPictureTest, TinIsItsEdges) {
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::Tin);
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(shown(*picture), 2000);
    EXPECT_LT(shown(*picture), 12000);
    EXPECT_TRUE(looksLikeReference(*picture, "tin"));
}

TEST_F(ViewPictureTest, GrayIsFilledWithoutTexture) {
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::Gray);
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(shown(*picture), 15000);
    // Only the block has a colour of its own.
    EXPECT_LT(coloured(*picture), shown(*picture) / 10);
    EXPECT_GT(coloured(*picture), 100);
    EXPECT_TRUE(looksLikeReference(*picture, "gray"));
}

TEST_F(ViewPictureTest, SkyFillsTheBackground) {
    putSky();
    m_settings.sky_show = 1;
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    EXPECT_LT(countPixels(*picture, isBackground), 100);
    EXPECT_TRUE(looksLikeReference(*picture, "as-loaded-sky"));
}

TEST_F(ViewPictureTest, SkyOfAnyNumberButZeroIsShown) {
    putSky();
    m_settings.sky_show = -3;
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    EXPECT_LT(countPixels(*picture, isBackground), 100);
}

TEST_F(ViewPictureTest, SkyIsOffUnlessAskedFor) {
    putSky();
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    EXPECT_TRUE(isBackground(pixel(*picture, 0, 0)));
    EXPECT_TRUE(isBackground(pixel(*picture, 319, 239)));
    EXPECT_TRUE(looksLikeReference(*picture, "as-loaded"));
}

TEST_F(ViewPictureTest, SkyWithoutItsFolderDoesNotHideTheModel) {
    m_settings.sky_show = 1;
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    EXPECT_GT(coloured(*picture), 12000);
}

TEST_F(ViewPictureTest, SkyDoesNotFollowTheModelsMode) {
    putSky();
    m_settings.sky_show = 1;
    const osg::ref_ptr<osg::Image> loaded = take(DisplayMode::AsLoaded);
    const osg::ref_ptr<osg::Image> gray = take(DisplayMode::Gray);
    ASSERT_TRUE(loaded && gray);
    for (const int x : {2, 317})
        for (const int y : {2, 237})
            EXPECT_LT((pixel(*loaded, x, y) - pixel(*gray, x, y)).length(), 0.02f);
}

TEST_F(ViewPictureTest, ViewIsFromAboveWithPlusYUp) {
    const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
    ASSERT_NE(picture, nullptr);
    // The blue block stands at x = 9, y = 11 of a square of 40 in the middle of the picture.
    osg::Vec2d sum;
    int count = 0;
    for (int y = 0; y < picture->t(); ++y)
        for (int x = 0; x < picture->s(); ++x) {
            const osg::Vec3 colour = pixel(*picture, x, y);
            if (colour.z() > colour.x() + clearlyColoured &&
                colour.z() > colour.y() + clearlyColoured) {
                sum += osg::Vec2d(x, y);
                ++count;
            }
        }
    ASSERT_GT(count, 50);
    const osg::Vec2d place = sum / count;
    EXPECT_GT(place.x(), 175);
    EXPECT_LT(place.x(), 240);
    EXPECT_GT(place.y(), 140);
    EXPECT_LT(place.y(), 200);
}

TEST_F(ViewPictureTest, FieldOfViewComesFromTheSettings) {
    const int narrow = shown(*take(DisplayMode::AsLoaded));
    m_settings.fovy = 28.0;
    const int wide = shown(*take(DisplayMode::AsLoaded));
    EXPECT_GT(narrow, 3 * wide);
    EXPECT_LT(narrow, 5 * wide);
}

TEST_F(ViewPictureTest, PictureHasTheSizeAskedFor) {
    for (const auto& [width, height] : {std::pair(101, 57), std::pair(1, 1), std::pair(640, 64)}) {
        m_request.width = width;
        m_request.height = height;
        const osg::ref_ptr<osg::Image> picture = take(DisplayMode::AsLoaded);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->s(), width);
        EXPECT_EQ(picture->t(), height);
    }
}

TEST_F(ViewPictureTest, ExistingPictureIsReplaced) {
    writeFile("picture.png", "old");
    ASSERT_NE(take(DisplayMode::AsLoaded), nullptr);
    EXPECT_EQ(readFile("picture.png").substr(1, 3), "PNG");
}

TEST_F(ViewPictureTest, UnreadableModelIsNamed) {
    const auto error = takeScreenshot(m_request, "missing.osgb", m_settings);
    ASSERT_TRUE(error);
    EXPECT_NE(error->find("missing.osgb"), std::string::npos);
    EXPECT_EQ(error->find('\n'), std::string::npos);
    EXPECT_FALSE(fs::exists("picture.png"));
}

TEST_F(ViewPictureTest, UnwritablePictureIsNamed) {
    m_request.file = "no/such/folder/picture.png";
    const auto error = takeScreenshot(m_request, "model.osgb", m_settings);
    ASSERT_TRUE(error);
    EXPECT_NE(error->find("no/such/folder/picture.png"), std::string::npos);
    EXPECT_EQ(error->find('\n'), std::string::npos);
}

} // namespace orbisk::test
