#include "view/OutsideFiles.h"

#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osg/Group>

#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

/// A model in "source" that includes a part and pages another in, both in files beside it.
class OutsideFilesTest : public testing::Test {
protected:
    OutsideFilesTest() {
        for (const char* folder : {"source", "source/parts", "saved"})
            fs::create_directory(folder);
        EXPECT_TRUE(writeModel(*makeQuadGeode(), nullptr, "source/parts/part.osgb", "source"));
        EXPECT_TRUE(writeModel(*makeQuadGeode(), nullptr, "source/tile.osgb", "source"));
        m_proxy->setFileName(0, "parts/part.osgb");
        m_tile->setFileName(0, "tile.osgb");
        m_tile->setRange(0, 0.0f, 1.0f);
        m_model->addChild(m_proxy);
        m_model->addChild(m_tile);
    }

    bool write(const std::string& file) { return writeModel(*m_model, nullptr, file, "source"); }

    /// The folder that the tile of a saved model is looked for in.
    static std::string tileFolder(const std::string& file) {
        const osg::ref_ptr<osg::Node> model = readModel(fs::absolute(file).string());
        const auto* tile =
            model ? dynamic_cast<osg::PagedLOD*>(model->asGroup()->getChild(1)) : nullptr;
        return tile ? tile->getDatabasePath() : "no tile";
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
    osg::ref_ptr<osg::Group> m_model = new osg::Group;
    osg::ref_ptr<osg::ProxyNode> m_proxy = new osg::ProxyNode;
    osg::ref_ptr<osg::PagedLOD> m_tile = new osg::PagedLOD;
};

} // namespace

TEST_F(OutsideFilesTest, ModelSavedElsewhereStillHasItsParts) {
    for (const std::string file : {"saved/model.osgb", "saved/model.osgt"}) {
        ASSERT_TRUE(write(file));
        const osg::ref_ptr<osg::Node> saved = readModel(fs::absolute(file).string());
        ASSERT_TRUE(saved);
        EXPECT_EQ(contentsOf(*saved).triangles, 2u);
        EXPECT_TRUE(fs::equivalent(tileFolder(file), "source"));
    }
}

TEST_F(OutsideFilesTest, ModelSavedBesideItsPartsCanBeMovedWithThem) {
    m_tile->setDatabasePath(fs::absolute("source").string());
    ASSERT_TRUE(write("source/model.osgb"));
    fs::rename("source", "moved");
    const osg::ref_ptr<osg::Node> saved = readModel(fs::absolute("moved/model.osgb").string());
    ASSERT_TRUE(saved);
    EXPECT_EQ(contentsOf(*saved).triangles, 2u);
    EXPECT_TRUE(fs::equivalent(tileFolder("moved/model.osgb"), "moved"));
}

TEST_F(OutsideFilesTest, ModelHasItsOwnReferencesAfterwards) {
    m_tile->setDatabasePath("source/");
    ASSERT_TRUE(write("saved/model.osgb"));
    EXPECT_EQ(m_tile->getDatabasePath(), "source/");
    EXPECT_EQ(m_proxy->getFileName(0), "parts/part.osgb");
}

TEST_F(OutsideFilesTest, PartThatIsMissingKeepsItsName) {
    m_proxy->setFileName(0, "gone.osgb");
    ASSERT_TRUE(write("saved/model.osgt"));
    EXPECT_NE(readFile("saved/model.osgt").find("\"gone.osgb\""), std::string::npos);
}

} // namespace orbisk::test
