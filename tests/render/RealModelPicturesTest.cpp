// Real models looked at in all display modes. With pictures to look at: a sheet of every folder is
// left in the build's folder "contact-sheets".

#include "support/Pictures.h"
#include "support/RealModels.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/Screenshot.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osgDB/WriteFile>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr int pictureSide = 128;
constexpr double narrowView = 14.0; ///< degrees: the model fills most of the picture
constexpr int modes = 4;
constexpr int modelsInARow = 3;
constexpr std::array allModes = {DisplayMode::AsLoaded, DisplayMode::PointCloud, DisplayMode::Tin,
                                 DisplayMode::Gray};

using Pictures = std::array<osg::ref_ptr<osg::Image>, modes>;

bool isBackground(const osg::Vec3& colour) {
    return (colour - osg::Vec3(0.8f, 0.8f, 0.8f)).length() < 0.01f;
}

int shownIn(const osg::Image& picture) {
    return countPixels(picture, [](const osg::Vec3& colour) { return !isBackground(colour); });
}

bool sameBytes(const osg::Image& one, const osg::Image& other) {
    return one.getTotalSizeInBytes() == other.getTotalSizeInBytes() &&
           std::equal(one.data(), one.data() + one.getTotalSizeInBytes(), other.data());
}

/// Models that have triangles but nothing to see from above, and why.
struct Unseen {
    const char* file;
    const char* reason;
};

constexpr Unseen unseenModels[] = {
    {"rifle_in_4_formats/rifle.obj", "its material has no opacity"},
    {"obj/number_formats.obj", "stands upright"},
    {"osgearth/tree.ive", "is two upright walls"},
    {"generated/lines_points_a.wrl", "has the colour of the background"},
    {"generated/proxy_a.osgt", "the library shows nothing of what includes a file that is missing"},
};

bool isUnseen(const ModelFacts& facts, const osg::BoundingBoxd& box) {
    const double width = std::min(box.xMax() - box.xMin(), box.yMax() - box.yMin());
    const bool thin = facts.radius <= 0.0 || width < 0.01 * facts.radius;
    return thin || std::any_of(std::begin(unseenModels), std::end(unseenModels),
                               [&](const Unseen& unseen) { return facts.file == unseen.file; });
}

class ContactSheet {
public:
    explicit ContactSheet(std::size_t models)
        : m_rows((static_cast<int>(models) + modelsInARow - 1) / modelsInARow) {
        m_sheet->allocateImage(modelsInARow * modes * pictureSide, m_rows * pictureSide, 1, GL_RGB,
                               GL_UNSIGNED_BYTE);
        std::fill_n(m_sheet->data(), m_sheet->getTotalSizeInBytes(), 255);
    }

    void add(const Pictures& pictures) {
        const int column = m_next % modelsInARow * modes;
        const int row = m_rows - 1 - m_next / modelsInARow;
        for (int mode = 0; mode < modes; ++mode)
            if (const osg::ref_ptr<osg::Image>& picture = pictures[static_cast<std::size_t>(mode)])
                m_sheet->copySubImage((column + mode) * pictureSide, row * pictureSide, 0,
                                      picture.get());
        ++m_next;
    }

    void write(const std::string& name) const {
        const fs::path folder = fs::path(ORBISK_STAGE_DIR).parent_path() / "contact-sheets";
        fs::create_directories(folder);
        EXPECT_TRUE(osgDB::writeImageFile(*m_sheet, (folder / (name + ".png")).string()));
    }

private:
    int m_rows;
    int m_next = 0;
    osg::ref_ptr<osg::Image> m_sheet = new osg::Image;
};

class RealModelPictures : public RealModelsTest {
protected:
    Pictures take(const std::string& model) {
        ScreenshotRequest request;
        request.file = "picture.png";
        request.width = pictureSide;
        request.height = pictureSide;
        AppSettings settings;
        settings.fovy = narrowView;
        Pictures pictures;
        for (std::size_t i = 0; i < allModes.size(); ++i) {
            request.mode = allModes[i];
            const auto error = takeScreenshot(request, model, settings);
            EXPECT_FALSE(error) << *error;
            pictures[i] = readPicture(request.file);
        }
        return pictures;
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

void expectModesTellApart(const Pictures& pictures, const ModelContents& contents) {
    const auto& [loaded, points, edges, gray] = pictures;
    EXPECT_TRUE(gray);
    EXPECT_GT(shownIn(*loaded), 0);
    if (contents.triangles == 0)
        return;
    EXPECT_GT(shownIn(*points), 0);
    EXPECT_GT(shownIn(*edges), 0);
    // Where the triangles are smaller than a pixel, the corners cover what the faces do.
    EXPECT_LE(shownIn(*points), 1.1 * shownIn(*loaded) + pictureSide);
}

} // namespace

TEST_P(RealModelPictures, ShowWhatThereIsInEveryMode) {
    const std::vector<ModelFacts> all = models();
    ContactSheet sheet(all.size());
    int different = 0;
    int grayShown = 0;
    int withTriangles = 0;
    for (const ModelFacts& facts : all) {
        SCOPED_TRACE(facts.file);
        const std::string file = pathOf(facts).string();
        const osg::ref_ptr<osg::Node> model = readModel(file);
        ASSERT_TRUE(model);
        const ModelContents contents = contentsOf(*model);
        const Pictures pictures = take(file);
        for (const auto& picture : pictures)
            ASSERT_TRUE(picture);
        sheet.add(pictures);
        if (contents.empty() || isUnseen(facts, contents.box))
            continue;
        expectModesTellApart(pictures, contents);
        if (contents.triangles == 0)
            continue;
        ++withTriangles;
        different += sameBytes(*pictures[0], *pictures[1]) ? 0 : 1;
        grayShown += shownIn(*pictures[3]) > 0 ? 1 : 0;
    }
    EXPECT_GE(different, withTriangles * 9 / 10);
    // Without its texture a white model may have the colour of the background.
    EXPECT_GE(2 * grayShown, withTriangles);
    sheet.write(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, RealModelPictures, testing::ValuesIn(realModelFolders),
                         realModelFolderName);

} // namespace orbisk::test
