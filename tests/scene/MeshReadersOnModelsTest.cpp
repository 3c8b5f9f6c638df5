// The program's readers of meshes against those that come with the library, on real models: a
// folder of them is named by the environment. Without it these tests are skipped.

#include "readers/ModelReaders.h"
#include "support/DrawnModel.h"
#include "support/PackagedReader.h"
#include "support/SceneTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
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

template <class Change>
void changeVertices(DrawnModel& model, const Change& change) {
    for (DrawnTriangle& triangle : model.triangles)
        for (DrawnVertex& vertex : triangle)
            change(vertex);
}

void dropColours(DrawnModel& model) {
    changeVertices(model, [](DrawnVertex& vertex) { vertex.colour = osg::Vec4(); });
}

/// Normals go: the library made them of what was rounded before.
void roundToSinglePrecision(DrawnModel& model) {
    changeVertices(model, [](DrawnVertex& vertex) {
        vertex.place = osg::Vec3(vertex.place);
        vertex.normal = osg::Vec3d();
    });
    model.nodes.clear();
}

osg::Vec3d leastCorner(const DrawnModel& model) {
    osg::Vec3d least = model.triangles.at(0)[0].place;
    for (const DrawnTriangle& triangle : model.triangles)
        for (const DrawnVertex& vertex : triangle)
            least = std::min(least, vertex.place);
    return least;
}

} // namespace

TEST_F(MeshReadersOnModelsTest, PlyIsReadAsTheLibraryReadsIt) {
    osgDB::ReaderWriter* packaged = packagedReader("ply", "ReaderWriterPLY");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("ply")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        DrawnModel ours = drawnModel(*models.ours);
        DrawnModel theirs = drawnModel(*models.theirs);
        const std::string name = fs::path(path).filename();
        if (name == "float-color.ply") {
            // The library takes shares of a colour for bytes of it.
            EXPECT_EQ(ours.triangles[0][0].colour, osg::Vec4(0, 0, 1, 1));
            dropColours(ours);
            dropColours(theirs);
        }
        if (name == "utm_box_double_a.ply") {
            EXPECT_EQ(leastCorner(ours), osg::Vec3d(494000.130, 4877000.570, 100.2));
            roundToSinglePrecision(ours);
            roundToSinglePrecision(theirs);
        }
        EXPECT_EQ(difference(ours, theirs), "");
    }
}

TEST_F(MeshReadersOnModelsTest, StlHasTheSameTriangles) {
    osgDB::ReaderWriter* packaged = packagedReader("stl", "STL Reader");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("stl")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        EXPECT_EQ(difference(inAnyOrder(drawnModel(*models.ours)),
                             inAnyOrder(drawnModel(*models.theirs))),
                  "");
    }
}

TEST_F(MeshReadersOnModelsTest, ThreeDsIsReadAsTheLibraryReadsIt) {
    osgDB::ReaderWriter* packaged = packagedReader("3ds", "3DS Auto Studio Reader/Writer");
    ASSERT_NE(packaged, nullptr);
    for (const std::string& path : modelsOf("3ds")) {
        SCOPED_TRACE(path);
        const Pair models = read(path, packaged);
        ASSERT_TRUE(models.ours && models.theirs);
        EXPECT_EQ(difference(drawnModel(*models.ours), drawnModel(*models.theirs)), "");
    }
}

TEST_F(MeshReadersOnModelsTest, HostileFilesAreRefusedOrSafe) {
    const std::set<std::string> meshExtensions = {"3ds", "ply", "sta", "stl"};
    int files = 0;
    for (const auto& entry : fs::recursive_directory_iterator(m_folder / "hostile")) {
        const std::string path = entry.path().string();
        const std::string extension = osgDB::getLowerCaseFileExtension(path);
        if (meshExtensions.count(extension) == 0 || !entry.is_regular_file())
            continue;
        SCOPED_TRACE(path);
        ++files;
        const osg::ref_ptr<osg::Node> model =
            modelReaderFor(extension)->readNode(path, nullptr).getNode();
        EXPECT_TRUE(!model || isSafe(*model));
        if (model)
            model->getBound();
    }
    EXPECT_GT(files, 15);
}

} // namespace orbisk::test
