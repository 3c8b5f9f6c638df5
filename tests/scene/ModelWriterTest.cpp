#include "view/ModelWriter.h"

#include "support/PluginInTest.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"

#include <gtest/gtest.h>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <filesystem>
#include <new>
#include <set>
#include <stdexcept>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

const osg::Vec4ub red(255, 0, 0, 255);
const osg::Vec4ub green(0, 255, 0, 255);
const osg::Vec4ub blue(0, 0, 255, 255);

const std::string scriptedFile = std::string("saved/model.") + testExtension;

/// A model is put together in memory, its image files in `source`, and written to `saved`.
class ModelWriterTest : public testing::Test {
protected:
    ModelWriterTest() {
        fs::create_directory("source");
        fs::create_directory("saved");
        fs::create_directory("elsewhere");
    }

    /// An image as a reader leaves it: with a name and, if wanted, a file in `source`.
    static osg::ref_ptr<osg::Image> image(const osg::Vec4ub& colour, const std::string& name,
                                          bool withFile = true) {
        osg::ref_ptr<osg::Image> result = makeImage(colour);
        const fs::path file = fs::path("source") / name;
        if (withFile) {
            fs::create_directories(file.parent_path());
            EXPECT_TRUE(osgDB::writeImageFile(*result, file.string()));
        }
        result->setFileName(name);
        return result;
    }

    void addQuad(osg::Image* texture) {
        const osg::ref_ptr<osg::Geode> geode = makeQuadGeode();
        if (texture)
            addTexture(*geode->getDrawable(0)->getOrCreateStateSet(), texture);
        m_model->addChild(geode);
    }

    bool write(const std::string& path = "saved/model.osgb") {
        return writeModel(*m_model, m_callback, path, "source");
    }

    /// Reads a saved model from another working directory; gives its textures' images.
    static std::vector<osg::ref_ptr<osg::Image>> savedImages(const std::string& file) {
        const fs::path path = fs::absolute(file);
        fs::current_path("elsewhere");
        const osg::ref_ptr<osg::Node> model = readModel(path.string());
        fs::current_path("..");
        std::vector<osg::ref_ptr<osg::Image>> images;
        if (!model || !model->asGroup())
            return images;
        for (unsigned int i = 0; i < model->asGroup()->getNumChildren(); ++i) {
            const osg::Geode* geode = model->asGroup()->getChild(i)->asGeode();
            const osg::StateSet* state = geode ? geode->getDrawable(0)->getStateSet() : nullptr;
            const osg::StateAttribute* attribute =
                state ? state->getTextureAttribute(0, osg::StateAttribute::TEXTURE) : nullptr;
            const auto* texture = dynamic_cast<const osg::Texture2D*>(attribute);
            images.emplace_back(texture ? const_cast<osg::Image*>(texture->getImage()) : nullptr);
        }
        return images;
    }

    /// Has the test's plug-in write a file, and read from it what was written.
    void letItWrite(const PluginInTest& plugin) {
        plugin->onWrite = [](const osg::Node&, const std::string& file) {
            writeFile(file, "a model");
            return osgDB::ReaderWriter::WriteResult(osgDB::ReaderWriter::WriteResult::FILE_SAVED);
        };
        plugin->onRead = [this] { return osgDB::ReaderWriter::ReadResult(m_model.get()); };
    }

    static std::set<std::string> filesIn(const fs::path& folder) {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    osg::ref_ptr<osg::Group> m_model = new osg::Group;
    osg::ref_ptr<ModelUpdateCallback> m_callback = new ModelUpdateCallback;
};

using Names = std::set<std::string>;

} // namespace

TEST_F(ModelWriterTest, TexturesStandBesideTheModel) {
    addQuad(image(red, "red.png"));
    addQuad(image(green, "deep/down/green.png"));
    EXPECT_TRUE(write());
    EXPECT_EQ(filesIn("saved"), (Names{"model.osgb", "red.png", "green.png"}));
    EXPECT_EQ(readFile("saved/red.png"), readFile("source/red.png"));
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 2u);
    ASSERT_TRUE(images[0] && images[1]);
    EXPECT_TRUE(hasColour(*images[0], red));
    EXPECT_TRUE(hasColour(*images[1], green));
}

TEST_F(ModelWriterTest, SavedModelNeedsNothingOfTheSource) {
    addQuad(image(red, "red.png"));
    EXPECT_TRUE(write());
    fs::remove_all("source");
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 1u);
    ASSERT_NE(images[0], nullptr);
    EXPECT_TRUE(hasColour(*images[0], red));
}

TEST_F(ModelWriterTest, TextFormatNamesTheImagesRelativeToItself) {
    addQuad(image(red, fs::absolute("source").string() + "/red.png"));
    EXPECT_TRUE(write("saved/model.osgt"));
    const std::string text = readFile("saved/model.osgt");
    EXPECT_NE(text.find("FileName \"red.png\""), std::string::npos);
    EXPECT_EQ(text.find(m_folder.path().string()), std::string::npos);
}

TEST_F(ModelWriterTest, PathWithoutAFolderIsTheWorkingDirectory) {
    addQuad(image(red, "red.png"));
    EXPECT_TRUE(write("model.osgb"));
    EXPECT_TRUE(fs::exists("model.osgb"));
    EXPECT_TRUE(fs::exists("red.png"));
}

TEST_F(ModelWriterTest, ModelIsAsBeforeAfterwards) {
    const osg::ref_ptr<osg::Image> first = image(red, "deep/red.png");
    const osg::ref_ptr<osg::Image> second = image(green, "", false);
    addQuad(first);
    addQuad(second);
    m_callback->attachTo(*m_model);
    Frames frames;
    frames.update(*m_model);
    const osg::StateSet* state = m_model->getChild(0)->asGroup()->getChild(0)->getStateSet();
    EXPECT_TRUE(write());
    EXPECT_EQ(first->getFileName(), "deep/red.png");
    EXPECT_EQ(second->getFileName(), "");
    EXPECT_EQ(m_model->getUpdateCallback(), m_callback);
    EXPECT_EQ(m_model->getChild(0)->asGroup()->getChild(0)->getStateSet(), state);
}

TEST_F(ModelWriterTest, CallbackIsNotWritten) {
    addQuad(nullptr);
    m_callback->attachTo(*m_model);
    Frames().update(*m_model);
    EXPECT_TRUE(write("saved/model.osgt"));
    const std::string text = readFile("saved/model.osgt");
    EXPECT_NE(text.find("Geometry"), std::string::npos);
    EXPECT_EQ(text.find("Callback"), std::string::npos);
}

TEST_F(ModelWriterTest, CallbackWorksOnAfterSaving) {
    addQuad(nullptr);
    m_callback->attachTo(*m_model);
    Frames frames;
    frames.update(*m_model);
    EXPECT_TRUE(write());
    m_callback->mode = DisplayMode::Gray;
    frames.update(*m_model);
    const osg::StateSet* state = m_model->getChild(0)->asGroup()->getChild(0)->getStateSet();
    EXPECT_EQ(state->getTextureMode(0, GL_TEXTURE_2D), osg::StateAttribute::OFF);
}

TEST_F(ModelWriterTest, ModelWithoutTheCallbackKeepsItsOwn) {
    const osg::ref_ptr<CountingCallback> own = new CountingCallback;
    m_model->setUpdateCallback(own);
    addQuad(nullptr);
    EXPECT_TRUE(write());
    EXPECT_EQ(m_model->getUpdateCallback(), own);
    EXPECT_TRUE(writeModel(*m_model, nullptr, "saved/again.osgb", "source"));
    EXPECT_EQ(m_model->getUpdateCallback(), own);
}

TEST_F(ModelWriterTest, TwoImagesOfOneNameBothStay) {
    addQuad(image(red, "one/roof.png"));
    addQuad(image(green, "two/roof.png"));
    EXPECT_TRUE(write());
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 2u);
    ASSERT_TRUE(images[0] && images[1]);
    EXPECT_TRUE(hasColour(*images[0], red));
    EXPECT_TRUE(hasColour(*images[1], green));
    EXPECT_EQ(filesIn("saved").size(), 3u);
}

TEST_F(ModelWriterTest, ImageUsedTwiceIsWrittenOnce) {
    const osg::ref_ptr<osg::Image> shared = image(red, "red.png");
    addQuad(shared);
    addQuad(shared);
    EXPECT_TRUE(write());
    EXPECT_EQ(filesIn("saved"), (Names{"model.osgb", "red.png"}));
}

TEST_F(ModelWriterTest, ForeignFileOfThatNameIsKept) {
    addQuad(image(red, "red.png"));
    writeFile("saved/red.png", "somebody else's");
    EXPECT_TRUE(write());
    EXPECT_EQ(readFile("saved/red.png"), "somebody else's");
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 1u);
    ASSERT_NE(images[0], nullptr);
    EXPECT_TRUE(hasColour(*images[0], red));
}

TEST_F(ModelWriterTest, SavingAgainAddsNoCopies) {
    addQuad(image(red, "red.png"));
    EXPECT_TRUE(write());
    const Names once = filesIn("saved");
    EXPECT_TRUE(write());
    EXPECT_EQ(filesIn("saved"), once);
}

TEST_F(ModelWriterTest, SavingInPlaceKeepsTheImageFiles) {
    addQuad(image(red, "red.png"));
    const std::string before = readFile("source/red.png");
    EXPECT_TRUE(write("source/model.osgb"));
    EXPECT_EQ(filesIn("source"), (Names{"model.osgb", "red.png"}));
    EXPECT_EQ(readFile("source/red.png"), before);
}

TEST_F(ModelWriterTest, ImageThatHasNoFileIsWrittenFromMemory) {
    addQuad(image(blue, "gone.png", false));
    EXPECT_TRUE(write());
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 1u);
    ASSERT_NE(images[0], nullptr);
    EXPECT_TRUE(hasColour(*images[0], blue));
    EXPECT_EQ(filesIn("saved"), (Names{"model.osgb", "gone.png"}));
}

TEST_F(ModelWriterTest, ImagesWithoutNamesGetSome) {
    addQuad(image(red, "", false));
    addQuad(image(green, "", false));
    EXPECT_TRUE(write());
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 2u);
    ASSERT_TRUE(images[0] && images[1]);
    EXPECT_TRUE(hasColour(*images[0], red));
    EXPECT_TRUE(hasColour(*images[1], green));
    EXPECT_EQ(filesIn("saved").size(), 3u);
}

TEST_F(ModelWriterTest, SavingAgainKeepsUnnamedImagesApart) {
    addQuad(image(red, "", false));
    EXPECT_TRUE(write());
    EXPECT_TRUE(write());
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 1u);
    ASSERT_NE(images[0], nullptr);
    EXPECT_TRUE(hasColour(*images[0], red));
}

TEST_F(ModelWriterTest, ImageOfAFormatThatCannotBeWrittenBecomesAPng) {
    addQuad(image(red, "picture.nosuchformat", false));
    EXPECT_TRUE(write());
    EXPECT_EQ(filesIn("saved"), (Names{"model.osgb", "picture.png"}));
    const auto images = savedImages("saved/model.osgb");
    ASSERT_EQ(images.size(), 1u);
    ASSERT_NE(images[0], nullptr);
    EXPECT_TRUE(hasColour(*images[0], red));
}

TEST_F(ModelWriterTest, WriterIsToldToLeaveImagesOutside) {
    const PluginInTest plugin;
    letItWrite(plugin);
    addQuad(nullptr);
    EXPECT_TRUE(write(scriptedFile));
    ASSERT_FALSE(plugin->optionTexts.empty());
    EXPECT_EQ(plugin->optionTexts.front(), "WriteImageHint=UseExternal");
}

TEST_F(ModelWriterTest, WriterSeesTheModelWithoutCallbackAndWithItsNewNames) {
    const PluginInTest plugin;
    const osg::ref_ptr<osg::Image> texture = image(red, "deep/red.png");
    addQuad(texture);
    m_callback->attachTo(*m_model);
    Frames().update(*m_model);
    letItWrite(plugin);
    int calls = 0;
    const auto writeAnything = plugin->onWrite;
    plugin->onWrite = [&](const osg::Node& node, const std::string& file) {
        ++calls;
        EXPECT_EQ(&node, m_model.get());
        EXPECT_EQ(node.getUpdateCallback(), nullptr);
        EXPECT_EQ(node.getComputeBoundingSphereCallback(), nullptr);
        EXPECT_EQ(texture->getFileName(), "red.png");
        return writeAnything(node, file);
    };
    EXPECT_TRUE(write(scriptedFile));
    EXPECT_EQ(calls, 1);
}

TEST_F(ModelWriterTest, MissingFolderFails) {
    const osg::ref_ptr<osg::Image> texture = image(red, "red.png");
    addQuad(texture);
    m_callback->attachTo(*m_model);
    EXPECT_FALSE(write("no/such/folder/model.osgb"));
    EXPECT_EQ(texture->getFileName(), "red.png");
    EXPECT_EQ(m_model->getUpdateCallback(), m_callback);
    EXPECT_FALSE(fs::exists("no"));
}

TEST_F(ModelWriterTest, UnknownFormatAndEmptyPathFail) {
    addQuad(nullptr);
    EXPECT_FALSE(write("saved/model.nosuchformat"));
    EXPECT_FALSE(write("saved/model"));
    EXPECT_FALSE(write(""));
    EXPECT_TRUE(filesIn("saved").empty());
}

TEST_F(ModelWriterTest, WriterThatThrowsFails) {
    using Result = osgDB::ReaderWriter::WriteResult;
    const PluginInTest plugin;
    const osg::ref_ptr<osg::Image> texture = image(red, "deep/red.png");
    addQuad(texture);
    m_callback->attachTo(*m_model);
    plugin->onWrite = [](const osg::Node&, const std::string&) -> Result {
        throw std::bad_alloc();
    };
    EXPECT_FALSE(write(scriptedFile));
    plugin->onWrite = [](const osg::Node&, const std::string&) -> Result {
        throw std::runtime_error("disk full");
    };
    EXPECT_FALSE(write(scriptedFile));
    EXPECT_EQ(texture->getFileName(), "deep/red.png");
    EXPECT_EQ(m_model->getUpdateCallback(), m_callback);
}

TEST_F(ModelWriterTest, WriterThatThrowsNoExceptionClassFails) {
    const PluginInTest plugin;
    addQuad(nullptr);
    m_callback->attachTo(*m_model);
    plugin->onWrite = [](const osg::Node&, const std::string&) -> osgDB::ReaderWriter::WriteResult {
        throw 42;
    };
    bool written = true;
    EXPECT_NO_THROW(written = write(scriptedFile));
    EXPECT_FALSE(written);
    EXPECT_EQ(m_model->getUpdateCallback(), m_callback);
}

TEST_F(ModelWriterTest, ImageWriterThatThrowsLeavesTheNamesAsTheyWere) {
    const PluginInTest plugin;
    const osg::ref_ptr<osg::Image> first = image(red, "deep/red.png");
    const osg::ref_ptr<osg::Image> second =
        image(green, std::string("odd/picture.") + testExtension, false);
    addQuad(first);
    addQuad(second);
    m_callback->attachTo(*m_model);
    plugin->onWriteImage = []() -> osgDB::ReaderWriter::WriteResult { throw std::bad_alloc(); };
    bool written = true;
    EXPECT_NO_THROW(written = write());
    EXPECT_FALSE(written);
    EXPECT_EQ(first->getFileName(), "deep/red.png");
    EXPECT_EQ(second->getFileName(), std::string("odd/picture.") + testExtension);
    EXPECT_EQ(m_model->getUpdateCallback(), m_callback);
}

} // namespace orbisk::test
