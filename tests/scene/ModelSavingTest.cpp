#include "support/FileLimits.h"
#include "support/PickTools.h"
#include "support/PluginInTest.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osg/Texture2D>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <random>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

using Result = osgDB::ReaderWriter::WriteResult;
using Names = std::set<std::string>;

constexpr const char* oldContents = "an older model of the user's";

const std::string scripted = std::string("model.") + testExtension;

/// Triangles of surveyed coordinates, which no float keeps and few texts give back.
std::vector<osg::Vec3d> surveyedCorners(int triangles) {
    std::mt19937 random(3);
    std::uniform_int_distribution<int> centimetres(0, 99999);
    std::vector<osg::Vec3d> corners;
    for (int i = 0; i < 3 * triangles; ++i)
        corners.emplace_back(493000.0 + centimetres(random) / 100.0,
                             4877000.0 + centimetres(random) / 100.0, centimetres(random) / 100.0);
    return corners;
}

osg::ref_ptr<osg::Geometry> surveyedTriangles(int triangles, bool doubles) {
    const std::vector<osg::Vec3d> corners = surveyedCorners(triangles);
    auto* set = new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3 * triangles);
    if (doubles)
        return makeDoubleGeometry(corners, set);
    return makeGeometry({corners.begin(), corners.end()}, set);
}

osg::ref_ptr<osg::Geode> geodeOf(osg::Drawable* drawable) {
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(drawable);
    return geode;
}

const osg::Array* verticesOf(const osg::Node& model) {
    const osg::Group* group = model.asGroup();
    const osg::Geometry* geometry = model.asGeometry();
    return geometry ? geometry->getVertexArray() : verticesOf(*group->getChild(0));
}

bool sameVertices(const osg::Node& one, const osg::Node& other) {
    const osg::Array* first = verticesOf(one);
    const osg::Array* second = verticesOf(other);
    return first->getType() == second->getType() &&
           first->getTotalDataSize() == second->getTotalDataSize() &&
           std::memcmp(first->getDataPointer(), second->getDataPointer(),
                       first->getTotalDataSize()) == 0;
}

class ModelSavingTest : public testing::Test {
protected:
    static bool save(osg::Node& model, const std::string& file) {
        return writeModel(model, nullptr, file, ".");
    }

    /// Saves over an older file, which is to stay.
    static void expectOldFileStays(osg::Node& model, const std::string& file) {
        writeFile(file, oldContents);
        const Names before = entriesOf(".");
        EXPECT_FALSE(save(model, file));
        EXPECT_EQ(readFile(file), oldContents);
        EXPECT_EQ(entriesOf("."), before);
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

class EveryFormatTest : public ModelSavingTest, public testing::WithParamInterface<const char*> {
protected:
    const std::string m_file = std::string("model.") + GetParam();
};

class NativeFormatTest : public EveryFormatTest {};
class ForeignFormatTest : public EveryFormatTest {};
class UselessWriterTest : public EveryFormatTest {};

} // namespace

TEST_P(NativeFormatTest, FloatVerticesComeBackBitForBit) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(500, false));
    ASSERT_TRUE(save(*model, m_file));
    const osg::ref_ptr<osg::Node> saved = readModel(m_file);
    ASSERT_TRUE(saved);
    EXPECT_TRUE(sameVertices(*saved, *model));
}

TEST_P(NativeFormatTest, DoubleVerticesComeBack) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(500, true));
    ASSERT_TRUE(save(*model, m_file));
    const osg::ref_ptr<osg::Node> saved = readModel(m_file);
    ASSERT_TRUE(saved);
    // The old text format's writer is the library's alone, its reader errs in the last place.
    if (m_file == "model.osg")
        EXPECT_NEAR(contentsOf(*saved).area / contentsOf(*model).area, 1.0, 1e-12);
    else
        EXPECT_TRUE(sameVertices(*saved, *model));
}

TEST_P(NativeFormatTest, EmptyModelIsSavedAsOne) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    EXPECT_TRUE(save(*model, m_file));
    EXPECT_TRUE(readModel(m_file));
}

INSTANTIATE_TEST_SUITE_P(All, NativeFormatTest, testing::Values("osgb", "osgt", "osg", "ive"));

TEST_P(ForeignFormatTest, DoubleVerticesAreWrittenAsWellAsTheFormatKeepsThem) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(50, true));
    ASSERT_TRUE(save(*model, m_file));
    const osg::ref_ptr<osg::Node> saved = readModel(m_file);
    ASSERT_TRUE(saved);
    const bool keepsDoubles = std::string(GetParam()) == "obj";
    const ModelContents wanted = contentsOf(*geodeOf(surveyedTriangles(50, keepsDoubles)));
    const ModelContents found = contentsOf(*saved);
    EXPECT_NEAR(found.area, wanted.area, 1e-6 * wanted.area);
    EXPECT_EQ(found.box._min, wanted.box._min);
    EXPECT_EQ(found.box._max, wanted.box._max);
    EXPECT_EQ(verticesOf(*model)->getType(), osg::Array::Vec3dArrayType) << "the model's own stay";
}

TEST_P(ForeignFormatTest, ModelOfNothingIsNotSaved) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(new osg::Geode);
    expectOldFileStays(*model, m_file);
}

INSTANTIATE_TEST_SUITE_P(All, ForeignFormatTest, testing::Values("obj", "3ds", "dxf", "stl"));

TEST_P(EveryFormatTest, FullDiskLeavesTheOldFile) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(5000, false));
    const FullDisk full(20000);
    expectOldFileStays(*model, m_file);
}

TEST_P(EveryFormatTest, DiskThatFillsWithTheLastBytesLeavesTheOldFile) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(2, false));
    writeFile(m_file, oldContents);
    {
        const FullDisk full(100);
        EXPECT_FALSE(save(*model, m_file));
    }
    EXPECT_EQ(readFile(m_file), oldContents);
    EXPECT_EQ(entriesOf("."), Names{m_file});
}

TEST_P(EveryFormatTest, WriteProtectedFileStays) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(2, false));
    writeFile(m_file, oldContents);
    fs::permissions(m_file, fs::perms::owner_read);
    ASSERT_EQ(chown(".", OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    ASSERT_EQ(chown(m_file.c_str(), OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    const OrdinaryUser user;
    if (!user.holds())
        GTEST_SKIP() << "the superuser's rights cannot be put down here";
    EXPECT_FALSE(save(*model, m_file));
    EXPECT_EQ(readFile(m_file), oldContents);
    EXPECT_EQ(entriesOf("."), Names{m_file});
}

TEST_P(EveryFormatTest, WriteProtectedFolderStaysAsItIs) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(2, false));
    fs::create_directory("closed");
    ASSERT_EQ(chown("closed", OrdinaryUser::id(), static_cast<gid_t>(-1)), 0);
    fs::permissions("closed", fs::perms::owner_read | fs::perms::owner_exec);
    {
        const OrdinaryUser user;
        if (!user.holds())
            GTEST_SKIP() << "the superuser's rights cannot be put down here";
        EXPECT_FALSE(save(*model, "closed/" + m_file));
    }
    EXPECT_TRUE(entriesOf("closed").empty());
}

INSTANTIATE_TEST_SUITE_P(All, EveryFormatTest,
                         testing::Values("osgb", "osgt", "osg", "ive", "obj", "3ds", "dxf", "stl"));

TEST_P(UselessWriterTest, OldFileStays) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(20, false));
    expectOldFileStays(*model, m_file);
}

// A header without a model is called a success by the writer of the first, nothing at all by that
// of the second; the others have none.
INSTANTIATE_TEST_SUITE_P(All, UselessWriterTest, testing::Values("wrl", "dae", "max", "fbx"));

TEST_F(ModelSavingTest, WriterThatSaysItSavedAndWroteNothingFailed) {
    const PluginInTest plugin;
    plugin->onWrite = [](const osg::Node&, const std::string&) -> Result {
        return Result::FILE_SAVED;
    };
    const osg::ref_ptr<osg::Node> model = makeQuadGeode();
    expectOldFileStays(*model, scripted);
}

TEST_F(ModelSavingTest, WriterThatFailsHalfWayLeavesTheOldFile) {
    const PluginInTest plugin;
    plugin->onWrite = [](const osg::Node&, const std::string& file) -> Result {
        writeFile(file, "half a mod");
        return Result::ERROR_IN_WRITING_FILE;
    };
    const osg::ref_ptr<osg::Node> model = makeQuadGeode();
    expectOldFileStays(*model, scripted);
}

TEST_F(ModelSavingTest, ForeignFileThatHoldsHalfTheModelFailed) {
    const PluginInTest plugin;
    plugin->onWrite = [](const osg::Node&, const std::string& file) -> Result {
        writeFile(file, "something");
        return Result::FILE_SAVED;
    };
    const osg::ref_ptr<osg::Node> half = makeQuadGeode(1.0f);
    plugin->onRead = [&] { return osgDB::ReaderWriter::ReadResult(half.get()); };
    const osg::ref_ptr<osg::Node> model = makeQuadGeode(2.0f);
    expectOldFileStays(*model, scripted);
    EXPECT_TRUE(save(*half, scripted));
}

TEST_F(ModelSavingTest, ImagesOfAModelThatWasNotSavedGo) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({255, 0, 0, 255});
    image->setFileName("gone.png");
    addTexture(*model->getOrCreateStateSet(), image);
    expectOldFileStays(*model, "model.wrl");
    EXPECT_EQ(image->getFileName(), "gone.png");
}

TEST_F(ModelSavingTest, ImageThatTheDiskHasNoRoomForFailsTheSave) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({255, 0, 0, 255}, 256);
    std::mt19937 noise(5);
    for (unsigned int i = 0; i < image->getTotalSizeInBytes(); ++i)
        image->data()[i] = static_cast<unsigned char>(noise());
    image->setFileName("large.png");
    addTexture(*model->getOrCreateStateSet(), image);
    const FullDisk full(8000);
    expectOldFileStays(*model, "model.osgb");
}

// The library's writer of this format writes every texture once more, over the file it came from.
TEST_F(ModelSavingTest, ThreeDsLeavesTheOriginalImageAsItIs) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({255, 0, 0, 255});
    ASSERT_TRUE(osgDB::writeImageFile(*image, "a_long_name_of_an_image.png"));
    const std::string original = readFile("a_long_name_of_an_image.png") + "trailing";
    writeFile("a_long_name_of_an_image.png", original);
    image->setFileName("a_long_name_of_an_image.png");
    addTexture(*model->getDrawable(0)->getOrCreateStateSet(), image);
    ASSERT_TRUE(save(*model, "model.3ds"));
    EXPECT_EQ(entriesOf("."), (Names{"model.3ds", "a_long_name_of_an_image.png"}));
    EXPECT_EQ(readFile("a_long_name_of_an_image.png"), original);
    EXPECT_NE(readFile("model.3ds").find("a_long_name_of_an_image.png"), std::string::npos);
}

TEST_F(ModelSavingTest, PictureNamedAfterAnotherFileOfTheUsersIsSavedAsItIsSeen) {
    // A model from elsewhere brings its picture along and says that it is called so.
    writeFile("private.key", "nobody else's");
    ASSERT_TRUE(osgDB::writeImageFile(*makeImage({1, 2, 3, 255}, 4), "private.png"));
    for (const char* name : {"private.key", "private.png"}) {
        const osg::ref_ptr<osg::Geode> model = geodeOf(surveyedTriangles(1, false));
        const osg::ref_ptr<osg::Image> image = makeImage({10, 200, 30, 255}, 4);
        image->setFileName(name);
        addTexture(*model->getDrawable(0)->getOrCreateStateSet(), image);
        const std::string folder = std::string("saved.") + name;
        fs::create_directory(folder);
        ASSERT_TRUE(save(*model, folder + "/model.osgb"));
        const osg::ref_ptr<osg::Image> saved = osgDB::readRefImageFile(folder + "/private.png");
        ASSERT_NE(saved, nullptr) << name;
        EXPECT_EQ(saved->getColor(0, 0), image->getColor(0, 0)) << name;
        EXPECT_EQ(entriesOf(folder), (Names{"model.osgb", "private.png"})) << name;
    }
}

TEST_F(ModelSavingTest, SavingOverTheOpenedFileItselfIsSafe) {
    const osg::ref_ptr<osg::Node> model = geodeOf(surveyedTriangles(50, false));
    ASSERT_TRUE(save(*model, "model.obj"));
    const osg::ref_ptr<osg::Node> opened = readModel("model.obj");
    ASSERT_TRUE(opened);
    ASSERT_TRUE(save(*opened, "model.obj"));
    const osg::ref_ptr<osg::Node> again = readModel("model.obj");
    ASSERT_TRUE(again);
    EXPECT_TRUE(sameVertices(*again, *opened));
    EXPECT_EQ(contentsOf(*again).box._min, contentsOf(*model).box._min);
    EXPECT_NEAR(contentsOf(*again).area, contentsOf(*model).area, 1e-6);
}

} // namespace orbisk::test
