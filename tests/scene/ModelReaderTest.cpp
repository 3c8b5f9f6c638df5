#include "view/ModelReader.h"

#include "support/PluginInTest.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <filesystem>
#include <new>
#include <stdexcept>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

class ModelReaderTest : public testing::Test {
protected:
    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

const std::string scriptedFile = std::string("model.") + testExtension;

} // namespace

TEST_F(ModelReaderTest, ReadsAModel) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(6.0f, osg::Vec3(1, 2, 3)), "model.osgb"));
    const osg::ref_ptr<osg::Node> model = readModel("model.osgb");
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->getBound().center(), osg::Vec3(1, 2, 3));
    EXPECT_NEAR(static_cast<double>(model->getBound().radius()), std::sqrt(18.0), 1e-5);
}

TEST_F(ModelReaderTest, ReadsFromAnotherFolderAndByAnOddName) {
    fs::create_directories("a folder/über");
    const std::string path = "a folder/über/model 1.2#3.osgb";
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), path));
    EXPECT_NE(readModel(path), nullptr);
    EXPECT_NE(readModel(fs::absolute(path).string()), nullptr);
}

TEST_F(ModelReaderTest, MissingModelIsNotReplacedByItsNamesakeInTheWorkingFolder) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "model.osgb"));
    EXPECT_EQ(readModel("gone/model.osgb"), nullptr);
    EXPECT_EQ(readModel(fs::absolute("gone/model.osgb").string()), nullptr);
}

TEST_F(ModelReaderTest, EachReadGivesAModelOfItsOwn) {
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "model.osgb"));
    EXPECT_NE(readModel("model.osgb"), readModel("model.osgb"));
}

TEST_F(ModelReaderTest, TexturesComeWithTheirImages) {
    const osg::ref_ptr<osg::Geode> written = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({10, 200, 30, 255});
    ASSERT_TRUE(osgDB::writeImageFile(*image, "picture.png"));
    image->setFileName("picture.png");
    addTexture(*written->getDrawable(0)->getOrCreateStateSet(), image);
    const osg::ref_ptr<osgDB::Options> external = new osgDB::Options("WriteImageHint=UseExternal");
    ASSERT_TRUE(osgDB::writeNodeFile(*written, "model.osgb", external));
    const osg::ref_ptr<osg::Node> model = readModel("model.osgb");
    ASSERT_NE(model, nullptr);
    const osg::Geode* geode = model->asGeode();
    ASSERT_NE(geode, nullptr);
    const auto* texture = dynamic_cast<const osg::Texture2D*>(
        geode->getDrawable(0)->getStateSet()->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    ASSERT_NE(texture, nullptr);
    ASSERT_NE(texture->getImage(), nullptr);
    EXPECT_TRUE(hasColour(*texture->getImage(), {10, 200, 30, 255}));
}

TEST_F(ModelReaderTest, MissingFileGivesNothing) {
    EXPECT_EQ(readModel("missing.osgb"), nullptr);
    EXPECT_EQ(readModel("no/such/folder/missing.obj"), nullptr);
}

TEST_F(ModelReaderTest, EmptyPathGivesNothing) {
    EXPECT_EQ(readModel(""), nullptr);
}

TEST_F(ModelReaderTest, FolderGivesNothing) {
    fs::create_directory("folder");
    fs::create_directory("folder.osgb");
    EXPECT_EQ(readModel("folder"), nullptr);
    EXPECT_EQ(readModel("folder.osgb"), nullptr);
    EXPECT_EQ(readModel("."), nullptr);
    EXPECT_EQ(readModel("/"), nullptr);
}

TEST_F(ModelReaderTest, UnknownExtensionGivesNothing) {
    writeFile("model.nosuchformat", "anything");
    writeFile("model", "anything");
    EXPECT_EQ(readModel("model.nosuchformat"), nullptr);
    EXPECT_EQ(readModel("model"), nullptr);
}

TEST_F(ModelReaderTest, EmptyFileGivesNothing) {
    for (const char* name : {"model.osgb", "model.osgt", "model.osg", "model.ive"}) {
        writeFile(name, "");
        EXPECT_EQ(readModel(name), nullptr) << name;
    }
}

TEST_F(ModelReaderTest, TruncatedFileGivesNothing) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    for (int i = 0; i < 20; ++i)
        model->addChild(makeQuadGeode());
    ASSERT_TRUE(osgDB::writeNodeFile(*model, "whole.osgb"));
    const std::string whole = readFile("whole.osgb");
    ASSERT_GT(whole.size(), 200u);
    for (const std::size_t size : {std::size_t(3), std::size_t(20), whole.size() / 2}) {
        writeFile("part.osgb", whole.substr(0, size));
        EXPECT_EQ(readModel("part.osgb"), nullptr) << size;
    }
}

TEST_F(ModelReaderTest, ReaderIsToldToReadImages) {
    const PluginInTest plugin;
    writeFile(scriptedFile, "x");
    plugin->onRead = [] { return osgDB::ReaderWriter::ReadResult(new osg::Group); };
    EXPECT_NE(readModel(scriptedFile), nullptr);
    EXPECT_EQ(plugin->optionTexts, std::vector<std::string>{"ForceReadingImage"});
}

TEST_F(ModelReaderTest, ReaderThatFailsGivesNothing) {
    const PluginInTest plugin;
    writeFile(scriptedFile, "x");
    EXPECT_EQ(readModel(scriptedFile), nullptr);
    EXPECT_EQ(plugin->optionTexts.size(), 1u);
}

TEST_F(ModelReaderTest, ReaderThatThrowsGivesNothing) {
    const PluginInTest plugin;
    writeFile(scriptedFile, "x");
    using Result = osgDB::ReaderWriter::ReadResult;
    plugin->onRead = []() -> Result { throw std::bad_alloc(); };
    EXPECT_EQ(readModel(scriptedFile), nullptr);
    plugin->onRead = []() -> Result { throw std::out_of_range("beyond the end"); };
    EXPECT_EQ(readModel(scriptedFile), nullptr);
    plugin->onRead = []() -> Result { throw 42; };
    EXPECT_EQ(readModel(scriptedFile), nullptr);
    EXPECT_EQ(plugin->optionTexts.size(), 3u);
}

TEST_F(ModelReaderTest, AfterAFailureReadingGoesOn) {
    const PluginInTest plugin;
    writeFile(scriptedFile, "x");
    plugin->onRead = []() -> osgDB::ReaderWriter::ReadResult { throw 42; };
    EXPECT_EQ(readModel(scriptedFile), nullptr);
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "model.osgb"));
    EXPECT_NE(readModel("model.osgb"), nullptr);
}

} // namespace orbisk::test
