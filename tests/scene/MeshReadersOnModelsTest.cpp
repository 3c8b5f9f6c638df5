// The program's readers of meshes against those that come with the library, on real models: a
// folder of them is named by the environment. Without it these tests are skipped.

#include "readers/ModelReaders.h"
#include "support/DrawnModel.h"
#include "support/PackagedReader.h"
#include "support/SceneTools.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <vector>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

class MeshReadersOnModelsTest : public testing::Test {
protected:
    void SetUp() override {
        const char* folder = std::getenv("ORBISK_MODELS");
        if (!folder)
            GTEST_SKIP() << "ORBISK_MODELS names no folder of models";
        m_folder = folder;
    }

    /// The files of an extension, in letters of any case, outside the folder of damaged ones.
    std::vector<std::string> modelsOf(const std::string& extension) const {
        std::vector<std::string> models;
        for (const auto& entry : fs::recursive_directory_iterator(m_folder)) {
            const std::string path = entry.path().string();
            const bool isDamaged = path.find("/hostile/") != std::string::npos;
            if (osgDB::getLowerCaseFileExtension(path) == extension && !isDamaged)
                models.push_back(path);
        }
        EXPECT_GT(models.size(), 4u);
        return models;
    }

    struct Pair {
        osg::ref_ptr<osg::Node> ours;
        osg::ref_ptr<osg::Node> theirs;
    };

    static Pair read(const std::string& path, osgDB::ReaderWriter* packaged) {
        osgDB::ReaderWriter* own = modelReaderFor(osgDB::getLowerCaseFileExtension(path));
        return {own->readNode(path, nullptr).getNode(),
                packaged->readNode(path, nullptr).getNode()};
    }

    QuietLibrary m_quiet;
    fs::path m_folder;
};

} // namespace

TEST_F(MeshReadersOnModelsTest, PlyIsReadAsTheLibraryReadsIt) {
    osgDB::ReaderWriter* packaged = packagedReader("ply", "ReaderWriterPLY");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("ply")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        const DrawnModel ours = drawnModel(*models.ours);
        const DrawnModel theirs = drawnModel(*models.theirs);
        EXPECT_EQ(ours.triangles, theirs.triangles);
        EXPECT_EQ(ours.points, theirs.points);
        EXPECT_EQ(ours.nodes, theirs.nodes);
    }
}

TEST_F(MeshReadersOnModelsTest, StlHasTheSameTriangles) {
    osgDB::ReaderWriter* packaged = packagedReader("stl", "STL Reader");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("stl")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        const DrawnModel ours = drawnModel(*models.ours);
        const DrawnModel theirs = drawnModel(*models.theirs);
        EXPECT_EQ(inAnyOrder(ours.triangles), inAnyOrder(theirs.triangles));
        EXPECT_EQ(ours.nodes, theirs.nodes);
    }
}

TEST_F(MeshReadersOnModelsTest, ThreeDsIsReadAsTheLibraryReadsIt) {
    osgDB::ReaderWriter* packaged = packagedReader("3ds", "3DS Auto Studio Reader/Writer");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("3ds")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        const DrawnModel ours = drawnModel(*models.ours);
        const DrawnModel theirs = drawnModel(*models.theirs);
        EXPECT_EQ(ours.triangles, theirs.triangles);
        EXPECT_EQ(ours.nodes, theirs.nodes);
    }
}

} // namespace orbisk::test
