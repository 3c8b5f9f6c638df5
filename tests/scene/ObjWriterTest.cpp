#include "writers/ObjWriter.h"

#include "support/PickTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ModelReader.h"
#include "view/ModelWriter.h"
#include "writers/ModelContents.h"

#include <gtest/gtest.h>
#include <osg/Billboard>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osg/TexMat>
#include <osgDB/WriteFile>

#include <cmath>
#include <sstream>

namespace orbisk::test {

namespace {

/// The two files as texts.
struct ObjFiles {
    bool written = false;
    std::string obj;
    std::string materials;
};

ObjFiles write(osg::Node& model) {
    std::ostringstream obj;
    std::ostringstream materials;
    ObjFiles files;
    files.written = writeObj(model, obj, materials, "model.mtl");
    files.obj = obj.str();
    files.materials = materials.str();
    return files;
}

/// The lines that begin with a key, without it.
std::vector<std::string> linesOf(const std::string& text, const std::string& key) {
    std::vector<std::string> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(key + " ", 0) == 0)
            found.push_back(line.substr(key.size() + 1));
    return found;
}

using Lines = std::vector<std::string>;

osg::ref_ptr<osg::Geometry> drawn(GLenum mode, int vertices) {
    std::vector<osg::Vec3> corners;
    for (int i = 0; i < vertices; ++i)
        corners.emplace_back(static_cast<float>(i), static_cast<float>(i % 2), 0.0f);
    return makeGeometry(corners, new osg::DrawArrays(mode, 0, vertices));
}

class ObjWriterTest : public testing::Test {
protected:
    QuietLibrary m_quiet;
};

} // namespace

TEST_F(ObjWriterTest, TurnsZUpToYUpAsReadersTurnItBack) {
    const osg::ref_ptr<osg::Geometry> geometry = makeTriangles({{1, 2, 3}, {4, 5, 6}, {7, 9, 8}});
    const ObjFiles files = write(*geometry);
    EXPECT_TRUE(files.written);
    EXPECT_EQ(linesOf(files.obj, "v"), (Lines{"1 3 -2", "4 6 -5", "7 8 -9"}));
    EXPECT_EQ(linesOf(files.obj, "f"), Lines{"1 2 3"});
}

TEST_F(ObjWriterTest, FloatsHaveTheDigitsThatTellThemApartAndDoublesAllTheirs) {
    const osg::ref_ptr<osg::Group> group = new osg::Group;
    group->addChild(makeTriangles({{0.1f, 0, 16777217.0f}, {1e-7f, 0, 0}, {0, 0, 1.5f}}));
    group->addChild(
        makeDoubleGeometry({{493994.87, 0.0, 4877429.62}, {0.1, 0.0, 0.0}, {0.0, 0.0, 1.0 / 3.0}},
                           new osg::DrawArrays(osg::PrimitiveSet::TRIANGLES, 0, 3)));
    EXPECT_EQ(linesOf(write(*group).obj, "v"),
              (Lines{"0.1 16777216 -0", "1e-07 0 -0", "0 1.5 -0", "493994.87 4877429.62 -0",
                     "0.1 0 -0", "0 0.3333333333333333 -0"}));
}

TEST_F(ObjWriterTest, TransformsAreWorkedInWithDoublePrecision) {
    const osg::ref_ptr<osg::Node> model =
        transformed(makeTriangles({{0.25f, 0, 0}, {1, 0, 0}, {0, 1, 0}}),
                    osg::Matrixd::translate(4877429.62, 0.0, 0.0));
    EXPECT_EQ(linesOf(write(*model).obj, "v").front(), "4877429.87 0 -0");
}

TEST_F(ObjWriterTest, NestedTransformsAccumulate) {
    const osg::ref_ptr<osg::Node> model = transformed(
        transformed(makeTriangles({{1, 0, 0}, {2, 0, 0}, {1, 1, 0}}), osg::Matrixd::scale(2, 2, 2)),
        osg::Matrixd::translate(10, 0, 0));
    EXPECT_EQ(linesOf(write(*model).obj, "v").front(), "12 0 -0");
}

TEST_F(ObjWriterTest, SharedGeometryStandsThereForEachOfItsPlaces) {
    const osg::ref_ptr<osg::Geometry> shared = makeTriangleAt(0);
    const osg::ref_ptr<osg::Node> model =
        groupOf({transformed(shared, osg::Matrixd::translate(0, 0, 5)),
                 transformed(shared, osg::Matrixd::translate(0, 0, 7))});
    const ObjFiles files = write(*model);
    EXPECT_EQ(linesOf(files.obj, "f"), (Lines{"1 2 3", "4 5 6"}));
    EXPECT_EQ(linesOf(files.obj, "v")[0], "-1 5 1");
    EXPECT_EQ(linesOf(files.obj, "v")[3], "-1 7 1");
}

TEST_F(ObjWriterTest, BillboardsStandAtTheirPositions) {
    const osg::ref_ptr<osg::Billboard> billboard = new osg::Billboard;
    billboard->addDrawable(makeTriangleAt(0), osg::Vec3(100, 0, 0));
    EXPECT_EQ(linesOf(write(*billboard).obj, "v").front(), "99 0 1");
}

TEST_F(ObjWriterTest, NormalsFollowAnUnevenScaleAsNormalsDo) {
    const osg::ref_ptr<osg::Geometry> geometry = makeTriangles({{0, 0, 0}, {1, 0, -1}, {0, 1, 0}});
    const osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    normals->push_back(osg::Vec3(0.6f, 0, 0.8f));
    geometry->setNormalArray(normals, osg::Array::BIND_OVERALL);
    const osg::ref_ptr<osg::Node> model = transformed(geometry, osg::Matrixd::scale(1, 1, 2));
    const ObjFiles files = write(*model);
    double x = 0.0;
    double up = 0.0;
    double y = 0.0;
    ASSERT_EQ(linesOf(files.obj, "vn").size(), 1u);
    std::istringstream(linesOf(files.obj, "vn")[0]) >> x >> up >> y;
    const double length = std::hypot(0.6, 0.4);
    EXPECT_NEAR(x, 0.6 / length, 1e-6);
    EXPECT_NEAR(up, 0.4 / length, 1e-6);
    EXPECT_EQ(linesOf(files.obj, "f"), Lines{"1//1 2//1 3//1"});
}

TEST_F(ObjWriterTest, EveryKindOfPrimitiveIsTakenApart) {
    const auto faces = [](GLenum mode, int vertices) {
        return linesOf(write(*drawn(mode, vertices)).obj, "f");
    };
    EXPECT_EQ(faces(GL_TRIANGLES, 7), (Lines{"1 2 3", "4 5 6"}));
    EXPECT_EQ(faces(GL_TRIANGLE_STRIP, 5), (Lines{"1 2 3", "2 4 3", "3 4 5"}));
    EXPECT_EQ(faces(GL_TRIANGLE_FAN, 5), (Lines{"1 2 3", "1 3 4", "1 4 5"}));
    EXPECT_EQ(faces(GL_QUADS, 9), (Lines{"1 2 3 4", "5 6 7 8"}));
    EXPECT_EQ(faces(GL_QUAD_STRIP, 6), (Lines{"1 2 4 3", "3 4 6 5"}));
    EXPECT_EQ(faces(GL_POLYGON, 5), Lines{"1 2 3 4 5"});
    EXPECT_EQ(faces(GL_TRIANGLES, 2), Lines());
    const auto lines = [](GLenum mode, int vertices) {
        return linesOf(write(*drawn(mode, vertices)).obj, "l");
    };
    EXPECT_EQ(lines(GL_LINES, 5), (Lines{"1 2", "3 4"}));
    EXPECT_EQ(lines(GL_LINE_STRIP, 3), (Lines{"1 2", "2 3"}));
    EXPECT_EQ(lines(GL_LINE_LOOP, 3), (Lines{"1 2", "2 3", "3 1"}));
    EXPECT_EQ(linesOf(write(*drawn(GL_POINTS, 2)).obj, "p"), (Lines{"1", "2"}));
}

TEST_F(ObjWriterTest, IndexedSetsCountFromTheirOwnVertices) {
    const osg::ref_ptr<osg::Group> group = new osg::Group;
    for (int i = 0; i < 2; ++i) {
        auto* set = new osg::DrawElementsUShort(osg::PrimitiveSet::TRIANGLES);
        for (const GLushort index : {2, 1, 0})
            set->push_back(index);
        group->addChild(makeGeometry({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, set));
    }
    EXPECT_EQ(linesOf(write(*group).obj, "f"), (Lines{"3 2 1", "6 5 4"}));
}

TEST_F(ObjWriterTest, PolygonTooLongForALineIsAFan) {
    const Lines faces = linesOf(write(*drawn(GL_POLYGON, 100)).obj, "f");
    ASSERT_EQ(faces.size(), 98u);
    EXPECT_EQ(faces.back(), "1 99 100");
}

TEST_F(ObjWriterTest, FacesOfVerticesThatAreNotThereAreLeftOut) {
    auto* set = new osg::DrawElementsUInt(osg::PrimitiveSet::TRIANGLES);
    for (const GLuint index : {0u, 1u, 2u, 0u, 1u, 4000000000u})
        set->push_back(index);
    EXPECT_EQ(linesOf(write(*makeGeometry({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, set)).obj, "f"),
              Lines{"1 2 3"});
}

TEST_F(ObjWriterTest, ModelOfNothingIsNotWritten) {
    EXPECT_FALSE(write(*osg::ref_ptr<osg::Group>(new osg::Group)).written);
    EXPECT_FALSE(write(*osg::ref_ptr<osg::Geometry>(new osg::Geometry)).written);
}

TEST_F(ObjWriterTest, ModelWithoutMaterialsNamesNoFileOfThem) {
    const ObjFiles files = write(*makeTriangleAt(0));
    EXPECT_EQ(files.obj.find("mtllib"), std::string::npos);
    EXPECT_TRUE(files.materials.empty());
}

TEST_F(ObjWriterTest, NamesComeFromTheNearestNodeAndDiffer) {
    const osg::ref_ptr<osg::Group> group = new osg::Group;
    group->setName("house\nroof");
    group->addChild(makeTriangleAt(0));
    group->addChild(makeTriangleAt(1));
    const osg::ref_ptr<osg::Geometry> own = makeTriangleAt(2);
    own->setName("chimney");
    group->addChild(own);
    EXPECT_EQ(linesOf(write(*group).obj, "o"), (Lines{"house roof", "house roof_2", "chimney"}));
}

TEST_F(ObjWriterTest, MaterialAndPictureAreInheritedAndSharedOnesWrittenOnce) {
    const osg::ref_ptr<osg::Material> material = new osg::Material;
    material->setDiffuse(osg::Material::FRONT, osg::Vec4(0.25f, 0.5f, 1.0f, 0.5f));
    material->setShininess(osg::Material::FRONT, 64.0f);
    const osg::ref_ptr<osg::Image> image = makeImage({255, 0, 0, 255});
    image->setFileName("roof tiles.png");
    const osg::ref_ptr<osg::Group> group = new osg::Group;
    group->getOrCreateStateSet()->setAttribute(material);
    const osg::ref_ptr<osg::Geometry> textured = makeQuad();
    addTexture(*textured->getOrCreateStateSet(), image);
    group->addChild(makeTriangleAt(0));
    group->addChild(textured);
    group->addChild(makeTriangleAt(1));
    const ObjFiles files = write(*group);
    EXPECT_EQ(linesOf(files.obj, "mtllib"), Lines{"model.mtl"});
    EXPECT_EQ(linesOf(files.obj, "usemtl"), (Lines{"material_1", "material_2", "material_1"}));
    EXPECT_EQ(linesOf(files.materials, "newmtl"), (Lines{"material_1", "material_2"}));
    EXPECT_EQ(linesOf(files.materials, "Kd").front(), "0.25 0.5 1");
    EXPECT_EQ(linesOf(files.materials, "d").front(), "0.5");
    EXPECT_EQ(linesOf(files.materials, "Ns").front(), "500");
    EXPECT_EQ(linesOf(files.materials, "map_Kd"), Lines{"roof tiles.png"});
}

TEST_F(ObjWriterTest, TextureMatrixIsWorkedIntoTheCoordinates) {
    const osg::ref_ptr<osg::Geometry> quad = makeQuad();
    const Lines plain = linesOf(write(*quad).obj, "vt");
    quad->getOrCreateStateSet()->setTextureAttribute(0,
                                                     new osg::TexMat(osg::Matrixd::scale(2, 4, 1)));
    const Lines scaled = linesOf(write(*quad).obj, "vt");
    ASSERT_EQ(plain.size(), scaled.size());
    for (std::size_t i = 0; i < plain.size(); ++i) {
        osg::Vec2 before;
        osg::Vec2 after;
        std::istringstream(plain[i]) >> before.x() >> before.y();
        std::istringstream(scaled[i]) >> after.x() >> after.y();
        EXPECT_EQ(after, osg::Vec2(2 * before.x(), 4 * before.y()));
    }
}

// A file in which only some vertices have colours makes the library's reader read beyond its own.
TEST_F(ObjWriterTest, OneColouredVertexGivesEveryVertexAColour) {
    const osg::ref_ptr<osg::Geometry> coloured = makeTriangleAt(0);
    const osg::ref_ptr<osg::Vec4ubArray> colours = new osg::Vec4ubArray(3);
    (*colours)[0] = osg::Vec4ub(255, 0, 51, 255);
    coloured->setColorArray(colours, osg::Array::BIND_PER_VERTEX);
    const osg::ref_ptr<osg::Node> model = groupOf({coloured, makeTriangleAt(1)});
    const Lines vertices = linesOf(write(*model).obj, "v");
    ASSERT_EQ(vertices.size(), 6u);
    EXPECT_EQ(vertices[0], "-1 0 1 1 0 0.2");
    EXPECT_EQ(vertices[3], "-1 1 1 1 1 1");
}

TEST_F(ObjWriterTest, WhiteAllOverIsNoColour) {
    const osg::ref_ptr<osg::Geometry> geometry = makeTriangleAt(0);
    const osg::ref_ptr<osg::Vec4Array> white = new osg::Vec4Array;
    white->push_back(osg::Vec4(1, 1, 1, 1));
    geometry->setColorArray(white, osg::Array::BIND_OVERALL);
    EXPECT_EQ(linesOf(write(*geometry).obj, "v").front(), "-1 0 1");
}

TEST_F(ObjWriterTest, WhatIsReadAgainStandsInTheSamePlaceWithItsPictureAndColours) {
    const WorkingFolder folder;
    const osg::ref_ptr<osg::Image> image = makeImage({0, 255, 0, 255});
    ASSERT_TRUE(osgDB::writeImageFile(*image, "green.png"));
    image->setFileName("green.png");
    const osg::ref_ptr<osg::Geometry> quad = makeQuad(2.0f, osg::Vec3(5, 6, 7));
    addTexture(*quad->getOrCreateStateSet(), image);
    const osg::ref_ptr<osg::Node> model =
        transformed(quad, osg::Matrixd::rotate(0.3, osg::Vec3d(1, 2, 3)));
    ASSERT_TRUE(writeModel(*model, nullptr, "saved model.obj", "."));
    EXPECT_EQ(entriesOf("."),
              (std::set<std::string>{"saved model.obj", "saved model.mtl", "green.png"}));
    const osg::ref_ptr<osg::Node> saved = readModel("saved model.obj");
    ASSERT_TRUE(saved);
    const ModelContents before = contentsOf(*model);
    const ModelContents after = contentsOf(*saved);
    EXPECT_EQ(after.triangles, before.triangles);
    EXPECT_NEAR(after.area, before.area, 1e-5);
    EXPECT_LT((osg::Vec3d(after.box._min) - osg::Vec3d(before.box._min)).length(), 1e-6);
    EXPECT_LT((osg::Vec3d(after.box._max) - osg::Vec3d(before.box._max)).length(), 1e-6);
    const osg::StateSet* state =
        saved->asGroup()->getChild(0)->asGeode()->getDrawable(0)->getStateSet();
    ASSERT_TRUE(state);
    EXPECT_TRUE(state->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
}

} // namespace orbisk::test
