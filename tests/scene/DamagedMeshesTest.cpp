// Files that were damaged at random: a reader gives nothing, or a model that can be drawn and
// picked.

#include "damage/Damage.h"
#include "readers/PlyReader.h"
#include "readers/Reader3ds.h"
#include "readers/StlReader.h"
#include "support/DrawnModel.h"
#include "support/File3dsMaker.h"
#include "support/ReaderTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osgDB/FileNameUtils>

#include <cstdlib>
#include <filesystem>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

constexpr int files = 1000;

/// Damages a file many times over; gives how often there still was a model.
template <class Reader>
int readDamaged(const std::string& whole, int times) {
    int models = 0;
    for (int i = 0; i < times; ++i) {
        const auto seed = static_cast<std::uint64_t>(i);
        const osg::ref_ptr<osg::Node> model = readBytes<Reader>(damagedOften(whole, seed));
        if (!model)
            continue;
        ++models;
        EXPECT_TRUE(isSafe(*model)) << i;
        model->getBound();
    }
    return models;
}

/// The same for the files of a folder; 1000 for all of them together.
template <class Reader>
void readDamagedModels(const std::string& extension) {
    const char* folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of models";
    std::vector<std::string> models;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (osgDB::getLowerCaseFileExtension(entry.path().string()) == extension &&
            entry.path().string().find("/hostile/") == std::string::npos)
            models.push_back(readFile(entry.path()));
    ASSERT_FALSE(models.empty());
    const int times = files / static_cast<int>(models.size()) + 1;
    for (const std::string& model : models)
        readDamaged<Reader>(model, times);
}

const char* const plyHeader = "element vertex 4\nproperty float x\nproperty double y\n"
                              "property float z\nproperty uchar red\nproperty uchar green\n"
                              "property uchar blue\nelement face 3\nproperty uchar flag\n"
                              "property list uchar int vertex_indices\nelement tristrips 1\n"
                              "property list int int vertex_indices\nend_header\n";

std::string plyText() {
    return std::string("ply\nformat ascii 1.0\n") + plyHeader +
           "0 0 0 255 0 0\n1 0 0.5 0 255 0\n1 1 0 0 0 255\n0 1 1e-3 9 9 9\n"
           "0 3 0 1 2\n1 4 0 1 2 3\n0 5 0 1 2 3 0\n5 0 1 2 -1 3\n";
}

std::string plyBinary(bool big) {
    Bytes body(big);
    for (int i = 0; i < 4; ++i)
        body.put(static_cast<float>(i & 1))
            .put(static_cast<double>(i >> 1))
            .put(0.0f)
            .put(std::uint8_t{200})
            .put(std::uint8_t{100})
            .put(std::uint8_t{0});
    body.put(std::uint8_t{0}).put(std::uint8_t{3}).put(0).put(1).put(2);
    body.put(std::uint8_t{0}).put(std::uint8_t{4}).put(0).put(1).put(3).put(2);
    body.put(std::uint8_t{0}).put(std::uint8_t{5}).put(0).put(1).put(3).put(2).put(0);
    body.put(4).put(0).put(1).put(2).put(3);
    return std::string("ply\nformat binary_") + (big ? "big" : "little") + "_endian 1.0\n" +
           plyHeader + body.bytes();
}

const StlFacet facet = {{osg::Vec3(0, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(0, 1, 0)}, 0x8123};

std::string file3ds() {
    const std::string map = chunk3ds(0xA200, name3ds(0xA300, "gone.png"));
    const std::string mesh =
        points3ds({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}) +
        textureVertices3ds({{0, 0}, {1, 0}, {1, 1}}) + matrix3ds(osg::Matrixf()) +
        faces3ds({0, 1, 2, 2, 1, 0}, faceMaterial3ds("m", {0}) + smoothing3ds({0, 1}));
    const std::string tracks =
        track3ds(0xB020, {{0, {1, 2, 3}}}) + track3ds(0xB021, {{0, {1, 0, 0, 1}}});
    return wholeFile3ds(material3ds("m", map) + object3ds("a", mesh),
                        node3ds(0, noParent3ds, "a", tracks) + node3ds(1, 0, "a", tracks));
}

class DamagedMeshesTest : public testing::Test {
protected:
    QuietLibrary m_quiet;
};

} // namespace

TEST_F(DamagedMeshesTest, PlyTextIsRefusedOrSafe) {
    EXPECT_GT(readDamaged<PlyReader>(plyText(), files), files / 10);
}

TEST_F(DamagedMeshesTest, PlyNumbersAreRefusedOrSafe) {
    EXPECT_GT(readDamaged<PlyReader>(plyBinary(false), files), files / 10);
    EXPECT_GT(readDamaged<PlyReader>(plyBinary(true), files), files / 10);
}

TEST_F(DamagedMeshesTest, StlIsRefusedOrSafe) {
    EXPECT_GT(readDamaged<StlReader>(binaryStl({facet, facet, facet}), files), files / 10);
    std::string text = "solid a\n";
    for (int i = 0; i < 3; ++i)
        text += "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                "endloop\nendfacet\n";
    EXPECT_GT(readDamaged<StlReader>(text + "endsolid a\n", files), files / 10);
}

TEST_F(DamagedMeshesTest, ThreeDsIsRefusedOrSafe) {
    EXPECT_GT(readDamaged<Reader3ds>(file3ds(), files), files / 10);
}

TEST_F(DamagedMeshesTest, RealPlyFilesAreRefusedOrSafe) {
    readDamagedModels<PlyReader>("ply");
}

TEST_F(DamagedMeshesTest, RealStlFilesAreRefusedOrSafe) {
    readDamagedModels<StlReader>("stl");
}

TEST_F(DamagedMeshesTest, Real3dsFilesAreRefusedOrSafe) {
    readDamagedModels<Reader3ds>("3ds");
}

} // namespace orbisk::test
