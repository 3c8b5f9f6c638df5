#include "readers/ObjReader.h"

#include "damage/Damage.h"
#include "measure/IntersectionVisitor.h"
#include "readers/ModelReaders.h"
#include "support/DrawnModel.h"
#include "support/PackagedReader.h"
#include "support/SceneDescription.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ReadGuard.h"

#include <gtest/gtest.h>
#include <osg/Material>
#include <osg/Texture2D>
#include <osgDB/Options>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>

#include <chrono>
#include <cmath>
#include <filesystem>
#include <random>
#include <sstream>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

using ReadResult = osgDB::ReaderWriter::ReadResult;

const std::string corners = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

class ObjReaderTest : public testing::Test {
protected:
    /// The scene of a file of these bytes; null where it can't be read.
    osg::ref_ptr<osg::Node> read(const std::string& text, const std::string& optionText = "") {
        writeFile("model.obj", text);
        const osg::ref_ptr<osgDB::Options> options = new osgDB::Options(optionText);
        return modelReaderFor("obj")->readNode("model.obj", options).getNode();
    }

    const osg::Geometry& geometryOf(const osg::ref_ptr<osg::Node>& scene, unsigned int child = 0) {
        return *scene->asGroup()->getChild(child)->asGeode()->getDrawable(0)->asGeometry();
    }

    double area(const std::string& text) {
        const osg::ref_ptr<osg::Node> scene = read(text);
        return scene ? areaOf(*scene) : -1.0;
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

osg::Vec3 vertex(const osg::Geometry& geometry, unsigned int index) {
    return static_cast<const osg::Vec3Array&>(*geometry.getVertexArray()).at(index);
}

} // namespace

TEST_F(ObjReaderTest, TurnsYUpToZUp) {
    const auto scene = read("v 1 2 3\nv 4 5 6\nv 7 8 10\nf 1 2 3\n");
    EXPECT_EQ(vertex(geometryOf(scene), 0), osg::Vec3(1, -3, 2));
    const auto unturned = read("v 1 2 3\nv 4 5 6\nv 7 8 10\nf 1 2 3\n", "noRotation");
    EXPECT_EQ(vertex(geometryOf(unturned), 0), osg::Vec3(1, 2, 3));
}

TEST_F(ObjReaderTest, GivesAGeodeToEachMaterialObjectGroupAndSmoothingGroup) {
    const auto scene = read(corners + "o b\ng x\nf 1 2 3\no a\nf 1 3 4\ng\nf 1 2 4\no\ns 1\n"
                                      "f 2 3 4\ns off\nf 1 2 3\nf 1 2 3\n");
    ASSERT_EQ(scene->asGroup()->getNumChildren(), 5u);
    const std::vector<std::string> names{"", "", "a", "x:a", "x:b"};
    for (unsigned int i = 0; i < names.size(); ++i)
        EXPECT_EQ(scene->asGroup()->getChild(i)->getName(), names[i]);
    EXPECT_EQ(geometryOf(scene, 0).getPrimitiveSet(0)->getNumIndices(), 6u);
}

TEST_F(ObjReaderTest, IndicesCountFromTheEndWhenNegative) {
    EXPECT_NEAR(area(corners + "f -4 -3 -2 -1\nv 9 9 9\n"), 1.0, 1e-12);
}

TEST_F(ObjReaderTest, FaceMayComeBeforeItsCorners) {
    EXPECT_NEAR(area("f 1 2 3 4\n" + corners), 1.0, 1e-12);
}

TEST_F(ObjReaderTest, FourthNumberOfAVertexDividesTheOthers) {
    EXPECT_EQ(vertex(geometryOf(read("v 2 4 6 2\nv 0 0 0\nv 1 0 0\nf 1 2 3\n")), 0),
              osg::Vec3(1, -3, 2));
}

TEST_F(ObjReaderTest, ConcaveFaceKeepsItsShape) {
    EXPECT_NEAR(area("v 0 0 0\nv 4 0 0\nv 4 4 0\nv 2 1 0\nv 0 4 0\nf 4 5 1 2 3\n"), 10.0, 1e-6);
}

TEST_F(ObjReaderTest, FaceThatCrossesItselfGetsAVertexWhereItDoes) {
    const auto scene = read("v 0 0 0\nv 2 2 0\nv 2 0 0\nv 0 2 0\nv -1 1 0\nf 1 2 3 4 5\n");
    EXPECT_NEAR(areaOf(*scene), 3.0, 1e-6);
    EXPECT_EQ(geometryOf(scene).getVertexArray()->getNumElements(), 6u);
}

TEST_F(ObjReaderTest, FaceOfManyCornersIsReadWhole) {
    // A star, as long as many lines of the usual limit.
    constexpr int count = 20'000;
    constexpr double step = 2.0 * 3.14159265358979323846 / count;
    std::ostringstream text;
    text.precision(9);
    double expected = 0.0;
    for (int i = 0; i < count; ++i) {
        const double radius = i % 2 ? 2.0 : 1.0;
        text << "v " << radius * std::cos(i * step) << " " << radius * std::sin(i * step) << " 0\n";
        expected += std::sin(step);
    }
    text << "f";
    for (int i = 1; i <= count; ++i)
        text << " " << i;
    EXPECT_NEAR(area(text.str()), expected, expected * 1e-4);
}

TEST_F(ObjReaderTest, NormalsOfFacesWithoutAreSmooth) {
    const auto scene = read("v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 -1\nf 1 2 3\nf 1 4 2\n");
    const auto* normals = dynamic_cast<const osg::Vec3Array*>(geometryOf(scene).getNormalArray());
    ASSERT_NE(normals, nullptr);
    EXPECT_EQ(normals->size(), 4u);
    EXPECT_NEAR(
        static_cast<double>((normals->at(0) - osg::Vec3(0, -1, -1) / std::sqrt(2.f)).length()), 0.0,
        1e-6);
}

TEST_F(ObjReaderTest, FaceAgainstItsNormalsIsTurned) {
    const std::string text = corners + "vn 0 0 -1\nf 1//1 2//1 3//1\n";
    const std::vector<osg::Vec3d> turned = trianglesOf(*read(text));
    EXPECT_EQ(turned.front(), osg::Vec3d(1, 0, 1));
    const std::vector<osg::Vec3d> left = trianglesOf(*read(text, "noReverseFaces"));
    EXPECT_EQ(left.front(), osg::Vec3d(0, 0, 0));
}

TEST_F(ObjReaderTest, EqualVerticesAreOne) {
    const auto scene = read(corners + "v 0 0 -0\nv 1 1 0\nf 1 2 3\nf 5 6 4\n");
    EXPECT_EQ(geometryOf(scene).getVertexArray()->getNumElements(), 4u);
}

TEST_F(ObjReaderTest, LineOfManyCornersHasAllItsSegments) {
    const auto scene = read(corners + "l 1 2 3 4\np 1 2\n");
    const osg::Geometry& geometry = geometryOf(scene);
    ASSERT_EQ(geometry.getNumPrimitiveSets(), 2u);
    EXPECT_EQ(geometry.getPrimitiveSet(0)->getMode(), static_cast<GLenum>(GL_LINES));
    EXPECT_EQ(geometry.getPrimitiveSet(0)->getNumIndices(), 6u);
    EXPECT_EQ(geometry.getPrimitiveSet(1)->getMode(), static_cast<GLenum>(GL_POINTS));
    EXPECT_EQ(geometry.getPrimitiveSet(1)->getNumIndices(), 2u);
}

TEST_F(ObjReaderTest, MaterialsAndPicturesAreFoundBesideTheModel) {
    fs::create_directory("models");
    ASSERT_TRUE(osgDB::writeImageFile(*makeImage({10, 200, 30, 255}), "models/a b.png"));
    writeFile("models/my materials.mtl", "newmtl red one\nKd 1 0 0\nmap_Kd -s 2 2 1 a b.png\n"
                                         "newmtl plain\nKd 0 1 0\nmap_Kd gone.png\n");
    writeFile("models/m.obj", "mtllib my materials.mtl\n" + corners +
                                  "usemtl red one\nf 1 2 3\nusemtl plain\nf 1 3 4\n"
                                  "usemtl unknown\nf 1 2 4\n");
    const osg::ref_ptr<osg::Node> scene =
        modelReaderFor("obj")->readNode("models/m.obj", nullptr).getNode();
    ASSERT_NE(scene, nullptr);
    const osg::StateSet* plain = geometryOf(scene, 0).getStateSet();
    const osg::StateSet* red = geometryOf(scene, 1).getStateSet();
    EXPECT_EQ(geometryOf(scene, 2).getStateSet(), nullptr);
    const auto* texture = dynamic_cast<const osg::Texture2D*>(
        red->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    ASSERT_NE(texture, nullptr);
    EXPECT_TRUE(hasColour(*texture->getImage(), {10, 200, 30, 255}));
    EXPECT_NE(red->getTextureAttribute(0, osg::StateAttribute::TEXMAT), nullptr);
    EXPECT_EQ(plain->getTextureAttribute(0, osg::StateAttribute::TEXTURE), nullptr);
    const auto* material =
        dynamic_cast<const osg::Material*>(plain->getAttribute(osg::StateAttribute::MATERIAL));
    EXPECT_EQ(material->getDiffuse(osg::Material::FRONT), osg::Vec4(0, 1, 0, 1));
}

TEST_F(ObjReaderTest, MissingMaterialFileIsNoFailure) {
    EXPECT_NEAR(area("mtllib gone.mtl\nmtllib model.obj\nmtllib /dev/zero\n" + corners +
                     "usemtl a\nf 1 2 3 4\n"),
                1.0, 1e-12);
}

TEST_F(ObjReaderTest, ColoursComeWithTheVerticesOrInComments) {
    const auto scene = read("v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 nan\nf 1 2 3\n");
    const auto* colours = dynamic_cast<const osg::Vec4Array*>(geometryOf(scene).getColorArray());
    ASSERT_NE(colours, nullptr);
    EXPECT_EQ(colours->at(0), osg::Vec4(1, 0, 0, 1));
    EXPECT_EQ(colours->at(2), osg::Vec4(0, 0, 1, 1));
    const auto comments = read(corners + "#MRGB ffff0000ff00ff00\nf 1 2 3\n");
    colours = dynamic_cast<const osg::Vec4Array*>(geometryOf(comments).getColorArray());
    ASSERT_NE(colours, nullptr);
    EXPECT_EQ(colours->at(1), osg::Vec4(0, 1, 0, 1));
    EXPECT_EQ(colours->at(2), osg::Vec4(1, 1, 1, 1));
}

TEST_F(ObjReaderTest, LargeCoordinatesKeepAllTheirDigits) {
    const auto scene = read("v 494428.610 4877455.580 131.570\nv 494392.760 4877472.610 136.060\n"
                            "v 494358.590 4877477.350 130.060\nf 1 2 3\n");
    const auto* vertices = dynamic_cast<const osg::Vec3dArray*>(geometryOf(scene).getVertexArray());
    ASSERT_NE(vertices, nullptr);
    EXPECT_EQ(vertices->at(0), osg::Vec3d(494428.610, -131.570, 4877455.580));
    const auto* normals = dynamic_cast<const osg::Vec3Array*>(geometryOf(scene).getNormalArray());
    osg::Vec3d normal = (vertices->at(1) - vertices->at(0)) ^ (vertices->at(2) - vertices->at(0));
    normal.normalize();
    EXPECT_NEAR((osg::Vec3d(normals->at(0)) - normal).length(), 0.0, 1e-5);
}

TEST_F(ObjReaderTest, PickOnLargeCoordinatesIsExact) {
    const auto scene = read("v 494428.610 4877455.580 131.570\nv 494392.760 4877472.610 136.060\n"
                            "v 494358.590 4877477.350 130.060\nf 1 2 3\n",
                            "noRotation");
    const osg::Vec3d a(494428.610, 4877455.580, 131.570);
    const osg::Vec3d b(494392.760, 4877472.610, 136.060);
    const osg::Vec3d c(494358.590, 4877477.350, 130.060);
    const osg::Vec3d inside = (a + b * 2.0 + c) / 4.0;
    osg::Vec3d direction = (b - a) ^ (c - a);
    direction.normalize();
    constexpr double distance = 100.0;
    IntersectionVisitor visitor(inside - direction * distance, direction);
    scene->accept(visitor);
    ASSERT_EQ(visitor.hits().size(), 1u);
    // Floats would be up to a quarter of a metre away.
    EXPECT_NEAR((visitor.hits().front() - inside).length(), 0.0, 1e-6);
}

TEST_F(ObjReaderTest, CoordinatesThatFloatsHoldStayFloats) {
    EXPECT_NE(dynamic_cast<const osg::Vec3Array*>(
                  geometryOf(read("v 494428 4877455 131\nv 494392.5 4877472 136\n"
                                  "v 494358 4877477 130\nf 1 2 3\n"))
                      .getVertexArray()),
              nullptr);
}

TEST_F(ObjReaderTest, FaceWithACornerThatIsNotThereIsLeftOut) {
    for (const char* face :
         {"f 1 2 99999999", "f 0 1 2", "f -1 -2 -99", "f 1 2 5", "f 1 2 99999999999999999999",
          "f 2147483647 1 2", "f -2147483648 1 2"}) {
        EXPECT_NEAR(area(corners + "f 1 2 3 4\n" + face + "\n"), 1.0, 1e-12) << face;
        EXPECT_EQ(read(corners + face + "\n"), nullptr) << face;
    }
}

TEST_F(ObjReaderTest, NormalsAndTextureCoordinatesThatAreNotThereAreLeftOut) {
    const auto scene =
        read(corners + "vt 0 0\nvn 0 0 1\nf 1/1/1 2/2/1 3/0/1\nf 1/1/1 2/1/-9 3/1/1\n");
    ASSERT_EQ(scene->asGroup()->getNumChildren(), 2u);
    EXPECT_EQ(geometryOf(scene, 0).getTexCoordArray(0), nullptr);
    EXPECT_NE(geometryOf(scene, 1).getTexCoordArray(0), nullptr);
    EXPECT_TRUE(isSafe(*scene));
}

TEST_F(ObjReaderTest, VerticesThatAreNotFiniteTakeTheirFacesAway) {
    EXPECT_EQ(read("v nan 0 0\nv 1 inf 0\nv 0 1 -1e999\nv 0 0 0\nf 1 2 3\nf 2 3 4\n"), nullptr);
    EXPECT_NEAR(area("v nan 0 0\n" + corners + "f 1 2 3\nf 2 3 4 5\n"), 1.0, 1e-12);
    EXPECT_NEAR(area("v 1 1 1 0\n" + corners + "f 1 2 3\nf 2 3 4 5\n"), 1.0, 1e-12);
    EXPECT_NEAR(area("v nonsense\n" + corners + "f 1 2 3\nf 2 3 4 5\n"), 1.0, 1e-12);
}

TEST_F(ObjReaderTest, FacesOfLessThanThreeCornersAreLeftOut) {
    EXPECT_EQ(read(corners + "f 1\nf 1 2\nf\nf x\n"), nullptr);
}

TEST_F(ObjReaderTest, FileThatShowsNothingFails) {
    for (const std::string& text : {std::string(), std::string("# only a comment\n"), corners,
                                    std::string("\0\xff\xfe\r\r\n\\\n", 8), std::string("f 1 2 3")})
        EXPECT_EQ(read(text), nullptr) << text;
}

TEST_F(ObjReaderTest, FileCutInALineGivesWhatStandsBefore) {
    const std::string whole = corners + "f 1 2 3\nf 1 3 4\n";
    for (std::size_t size = 0; size < whole.size(); ++size)
        if (const auto scene = read(whole.substr(0, size))) {
            EXPECT_TRUE(isSafe(*scene)) << size;
        }
    EXPECT_NEAR(area(whole.substr(0, whole.size() - 3)), 0.5, 1e-12);
}

TEST_F(ObjReaderTest, FolderOrMissingFileFails) {
    fs::create_directory("folder.obj");
    const osgDB::ReaderWriter& reader = *modelReaderFor("obj");
    EXPECT_FALSE(reader.readNode("folder.obj", nullptr).success());
    EXPECT_EQ(reader.readNode("gone.obj", nullptr).status(), ReadResult::FILE_NOT_FOUND);
    EXPECT_EQ(reader.readNode("model.osgt", nullptr).status(), ReadResult::FILE_NOT_HANDLED);
}

TEST_F(ObjReaderTest, OneNameForManyGroupsIsKeptOnce) {
    // Copied to each of the groups, the name would take gigabytes.
    std::string text = "o " + std::string(1'000'000, 'x') + "\n" + corners;
    for (int i = 0; i < 5'000; ++i)
        text += "g " + std::to_string(i) + "\nf 1 2 3\n";
    const auto scene = read(text);
    ASSERT_NE(scene, nullptr);
    EXPECT_EQ(scene->asGroup()->getNumChildren(), 5'000u);
    EXPECT_LT(scene->asGroup()->getChild(0)->getName().size(), 2'000u);
}

TEST_F(ObjReaderTest, FacesThatCrossThemselvesWithoutEndTakeAnEnd) {
    std::mt19937 random(1);
    std::string text;
    constexpr int count = 30'000;
    for (int i = 0; i < count; ++i)
        text += "v " + std::to_string(random() % 10'000) + " " + std::to_string(random() % 10'000) +
                " 0\n";
    text += "f";
    for (int i = 1; i <= count; ++i)
        text += " " + std::to_string(i);
    const auto start = std::chrono::steady_clock::now();
    const auto scene = read(text + "\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    ASSERT_NE(scene, nullptr);
    EXPECT_TRUE(isSafe(*scene));
}

TEST_F(ObjReaderTest, DamagedFilesDoNoHarm) {
    std::string whole = "mtllib m.mtl\n";
    for (int i = 0; i < 30; ++i)
        whole += "v " + std::to_string(i % 7) + "." + std::to_string(i) + " " + std::to_string(i) +
                 " -1e-1\nvt 0." + std::to_string(i) + " 1\nvn 0 0 1\n";
    for (int i = 1; i < 25; ++i) {
        const std::string at = std::to_string(i);
        const std::string next = std::to_string(i + 1);
        whole += "g g" + at + "\nf " + at + "/" + at + "/1 " + next + "/1/2 -1/-1/-1\nl " + at +
                 " " + next + "\nf 1 2 3 4 5 " + next + "\np 3 " + at + "\n";
    }
    int shown = 0;
    for (std::uint64_t seed = 0; seed < 1'000; ++seed)
        if (const auto scene = read(damagedOften(whole, seed))) {
            ++shown;
            EXPECT_TRUE(isSafe(*scene)) << seed;
            EXPECT_TRUE(std::isfinite(scene->getBound().radius())) << seed;
        }
    EXPECT_GT(shown, 500);
}

TEST_F(ObjReaderTest, LibraryReadsWithItAndStillWritesAfterwards) {
    installReadGuard();
    // Where the library's own reader sees a shorter file.
    writeFile("model.obj", "v 1 2 3\nv 1 3 3\nv 2 3 3\nl 1 2 3\n");
    const osg::ref_ptr<osg::Node> scene = osgDB::readRefNodeFile("model.obj");
    ASSERT_NE(scene, nullptr);
    EXPECT_EQ(geometryOf(scene).getPrimitiveSet(0)->getNumIndices(), 4u);
    ASSERT_TRUE(osgDB::writeNodeFile(*makeQuadGeode(), "written.obj"));
    EXPECT_NE(readFile("written.obj").find("\nf "), std::string::npos);
    ASSERT_NE(packagedReader("obj", "Wavefront OBJ Reader"), nullptr);
    EXPECT_EQ(geometryOf(osgDB::readRefNodeFile("model.obj")).getPrimitiveSet(0)->getNumIndices(),
              4u);
}

TEST_F(ObjReaderTest, ReadsFromAStreamToo) {
    std::istringstream stream(corners + "f 1 2 3 4\n");
    const osg::ref_ptr<osg::Node> scene =
        modelReaderFor("obj")->readNode(stream, nullptr).getNode();
    ASSERT_NE(scene, nullptr);
    EXPECT_NEAR(areaOf(*scene), 1.0, 1e-12);
}

} // namespace orbisk::test
