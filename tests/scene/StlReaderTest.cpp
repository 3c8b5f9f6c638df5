#include "readers/StlReader.h"

#include "support/DrawnModel.h"
#include "support/MeshFiles.h"
#include "support/PackagedReader.h"
#include "support/ReaderTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <sstream>

namespace orbisk::test {

namespace {

constexpr std::uint16_t coloured = 0x8000;
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

const StlFacet lower = {{osg::Vec3(0, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(0, 1, 0)}};
const StlFacet upper = {{osg::Vec3(1, 0, 0), osg::Vec3(1, 1, 0), osg::Vec3(0, 1, 0)}};

class StlReaderTest : public testing::Test {
protected:
    static DrawnModel drawn(const std::string& bytes) {
        const osg::ref_ptr<osg::Node> model = readBytes<StlReader>(bytes);
        EXPECT_NE(model, nullptr);
        return model ? drawnModel(*model) : DrawnModel();
    }

    void expectAsTheLibrary(const std::string& bytes) {
        writeFile("model.stl", bytes);
        const osg::ref_ptr<osg::Node> theirs =
            packagedReader("stl", "STL Reader")->readNode("model.stl", nullptr).getNode();
        ASSERT_NE(theirs, nullptr);
        EXPECT_EQ(difference(inAnyOrder(drawn(bytes)), inAnyOrder(drawnModel(*theirs))), "");
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

std::string facetText(const StlFacet& facet, const std::string& normal = "0 0 1") {
    std::ostringstream text;
    text << "  facet normal " << normal << "\n    outer loop\n";
    for (const osg::Vec3& corner : facet.corners)
        text << "      vertex " << corner.x() << " " << corner.y() << " " << corner.z() << "\n";
    text << "    endloop\n  endfacet\n";
    return text.str();
}

std::string solid(const std::string& name, const std::string& facets) {
    return "solid " + name + "\n" + facets + "endsolid " + name + "\n";
}

} // namespace

TEST_F(StlReaderTest, RandomFilesHaveTheTrianglesThatTheLibraryReads) {
    std::mt19937 random(5);
    std::uniform_int_distribution<int> place(0, 3);
    std::uniform_int_distribution<int> colour(0, 0x7FFF);
    const auto corner = [&] {
        return osg::Vec3(static_cast<float>(place(random)), static_cast<float>(place(random)),
                         static_cast<float>(place(random)));
    };
    for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(round);
        std::vector<StlFacet> facets;
        std::string text;
        for (int i = 0; i <= round; ++i) {
            facets.push_back({{corner(), corner(), corner()}});
            if (round % 3 == 0)
                facets.back().colour = static_cast<std::uint16_t>(coloured | colour(random));
            text += facetText(facets.back(), "0 " + std::to_string(place(random)) + " 1");
        }
        expectAsTheLibrary(binaryStl(facets));
        expectAsTheLibrary(solid("first", text) + solid("second part", text));
    }
}

TEST_F(StlReaderTest, FacetsStayInTheirOrder) {
    const DrawnModel model = drawn(binaryStl({upper, lower, upper}));
    ASSERT_EQ(model.triangles.size(), 3u);
    EXPECT_EQ(model.triangles[0], model.triangles[2]);
    EXPECT_EQ(model.triangles[1][0].place, osg::Vec3d(0, 0, 0));
}

TEST_F(StlReaderTest, SameCornersAreOneVertex) {
    const osg::ref_ptr<osg::Node> model = readBytes<StlReader>(binaryStl({lower, upper}));
    ASSERT_NE(geometryOf(model), nullptr);
    EXPECT_EQ(geometryOf(model)->getVertexArray()->getNumElements(), 4u);
}

TEST_F(StlReaderTest, BothZerosAreOnePlace) {
    StlFacet negative = lower;
    negative.corners[0] = osg::Vec3(-0.0f, -0.0f, 0.0f);
    const osg::ref_ptr<osg::Node> model = readBytes<StlReader>(binaryStl({lower, negative}));
    EXPECT_EQ(geometryOf(model)->getVertexArray()->getNumElements(), 3u);
}

TEST_F(StlReaderTest, ManyVerticesAreNamedInFourBytes) {
    // The library needs minutes for so many facets that share nothing.
    std::vector<StlFacet> facets;
    for (int i = 0; i < 22'000; ++i) {
        StlFacet facet = lower;
        for (osg::Vec3& corner : facet.corners)
            corner += osg::Vec3(static_cast<float>(2 * i), 0.0f, 0.0f);
        facets.push_back(facet);
    }
    const osg::ref_ptr<osg::Node> model = readBytes<StlReader>(binaryStl(facets));
    ASSERT_NE(geometryOf(model), nullptr);
    EXPECT_EQ(geometryOf(model)->getVertexArray()->getNumElements(), 66'000u);
    EXPECT_EQ(geometryOf(model)->getPrimitiveSet(0)->getType(),
              osg::PrimitiveSet::DrawElementsUIntPrimitiveType);
    EXPECT_EQ(drawnModel(*model).triangles.back()[1].place, osg::Vec3d(43'999, 0, 0));
}

TEST_F(StlReaderTest, BinaryFileMayBeginWithSolid) {
    const std::string bytes = binaryStl({lower, upper}, 2, "solid made by a test");
    EXPECT_EQ(drawn(bytes).triangles.size(), 2u);
    // Even where its size tells nothing.
    EXPECT_EQ(drawn(bytes + "tail").triangles.size(), 2u);
}

TEST_F(StlReaderTest, FacetsBeyondTheirNumberAreLeftOut) {
    EXPECT_EQ(drawn(binaryStl({lower, upper}, 1)).triangles.size(), 1u);
}

TEST_F(StlReaderTest, NumberThatWasNeverFilledInMeansAll) {
    EXPECT_EQ(drawn(binaryStl({lower, upper}, 0)).triangles.size(), 2u);
}

TEST_F(StlReaderTest, CutFileShowsTheFacetsThatAreWhole) {
    for (const std::uint32_t claimed : {3u, 85899346u, 4294967295u})
        EXPECT_EQ(drawn(binaryStl({lower, upper}, claimed)).triangles.size(), 2u) << claimed;
    const std::string whole = binaryStl({lower, upper});
    EXPECT_EQ(drawn(whole.substr(0, whole.size() - 1)).triangles.size(), 1u);
}

TEST_F(StlReaderTest, FacetsThatAreNotFiniteAreLeftOut) {
    StlFacet bad = upper;
    bad.corners[1].y() = nan;
    EXPECT_EQ(drawn(binaryStl({lower, bad})).triangles.size(), 1u);
    bad.corners[1].y() = std::numeric_limits<float>::infinity();
    EXPECT_EQ(drawn(binaryStl({bad, lower})).triangles.size(), 1u);
    EXPECT_EQ(drawn(solid("a", facetText(bad) + facetText(lower))).triangles.size(), 1u);
}

TEST_F(StlReaderTest, NormalThatIsNotFiniteIsZero) {
    const DrawnModel model = drawn(solid("a", facetText(lower, "nan 0 1")));
    ASSERT_EQ(model.triangles.size(), 1u);
    EXPECT_EQ(model.triangles[0][0].normal, osg::Vec3d());
}

TEST_F(StlReaderTest, ColoursAreShownWhereEveryFacetHasOne) {
    StlFacet red = lower;
    red.colour = coloured | 0x1F << 10;
    EXPECT_EQ(drawn(binaryStl({red})).triangles[0][0].colour, osg::Vec4(1, 0, 0, 1));
    EXPECT_EQ(drawn(binaryStl({red, upper})).triangles[0][0].colour, osg::Vec4());
}

TEST_F(StlReaderTest, ColourOfTheHeaderIsThatOfFacetsThatSaySo) {
    StlFacet own = lower;
    own.colour = 0x1F;
    StlFacet common = upper;
    common.colour = coloured;
    for (const char* before : {"", "some words "}) {
        const std::string header =
            std::string(before) + "COLOR=" + std::string("\x00\xFF\x00\xFF", 4);
        const DrawnModel model = drawn(binaryStl({own, common}, 2, header));
        ASSERT_EQ(model.triangles.size(), 2u);
        EXPECT_EQ(model.triangles[0][0].colour, osg::Vec4(1, 0, 0, 1));
        EXPECT_EQ(model.triangles[1][0].colour, osg::Vec4(0, 1, 0, 1));
    }
}

TEST_F(StlReaderTest, ColourAtTheVeryEndOfTheHeaderIsNone) {
    const std::string header = std::string(74, ' ') + "COLOR=";
    EXPECT_EQ(drawn(binaryStl({lower}, 1, header)).triangles[0][0].colour, osg::Vec4());
}

TEST_F(StlReaderTest, EachSolidIsAGeodeOfItsName) {
    const osg::ref_ptr<osg::Node> model = readBytes<StlReader>(
        solid("Left", facetText(lower)) + solid("", "") + solid("Right side", facetText(upper)));
    ASSERT_NE(model, nullptr);
    ASSERT_EQ(model->asGroup()->getNumChildren(), 2u);
    EXPECT_EQ(model->asGroup()->getChild(0)->getName(), "Left");
    EXPECT_EQ(model->asGroup()->getChild(1)->getName(), "Right side");
}

TEST_F(StlReaderTest, KeywordsMayBeInCapitals) {
    EXPECT_EQ(drawn("SOLID A\nFACET NORMAL 0 0 1\nOUTER LOOP\nVERTEX 0 0 0\nVERTEX 1 0 0\n"
                    "VERTEX 0 1 0\nENDLOOP\nENDFACET\nENDSOLID A\n")
                  .triangles.size(),
              1u);
}

TEST_F(StlReaderTest, FacetOfMoreCornersIsAFan) {
    const DrawnModel model =
        drawn("solid a\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 2 0 0\nvertex 3 1 0\n"
              "vertex 2 2 0\nvertex 0 2 0\nendloop\nendfacet\nendsolid a\n");
    ASSERT_EQ(model.triangles.size(), 3u);
    for (const DrawnTriangle& triangle : model.triangles)
        EXPECT_EQ(triangle[0].place, osg::Vec3d(0, 0, 0));
    EXPECT_EQ(model.triangles[2][2].place, osg::Vec3d(0, 2, 0));
}

TEST_F(StlReaderTest, TextThatEndsEarlyShowsTheFacetsThatAreWhole) {
    const std::string text = "solid a\n" + facetText(lower) + facetText(upper);
    EXPECT_EQ(drawn(text).triangles.size(), 2u);
    EXPECT_EQ(drawn(text.substr(0, text.rfind("vertex"))).triangles.size(), 1u);
}

TEST_F(StlReaderTest, CornersOutsideAFacetAreNothing) {
    const DrawnModel model = drawn("solid a\nvertex 9 9 9\nvertex 8 8 8\nvertex 7 8 9\n" +
                                   facetText(lower) + "vertex 1 2 3\n" + "endsolid a\n");
    EXPECT_EQ(model.triangles.size(), 1u);
}

TEST_F(StlReaderTest, SolidWithoutFacetsIsAnEmptyModel) {
    const osg::ref_ptr<osg::Node> model = readBytes<StlReader>("solid nothing\nendsolid nothing\n");
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->asGroup()->getNumChildren(), 0u);
}

TEST_F(StlReaderTest, OtherTextIsRefused) {
    EXPECT_EQ(readBytes<StlReader>(""), nullptr);
    EXPECT_EQ(readBytes<StlReader>("sol"), nullptr);
    std::string lines;
    for (int i = 0; i < 200; ++i)
        lines += "v 1.0 2.0 3.0\n";
    EXPECT_EQ(readBytes<StlReader>(lines), nullptr);
}

TEST_F(StlReaderTest, IsFoundByItsExtensions) {
    const osg::ref_ptr<StlReader> reader = new StlReader;
    for (const char* name : {"model.stl", "model.STL", "model.sta"}) {
        writeFile(name, binaryStl({lower}));
        EXPECT_TRUE(reader->readNode(name, nullptr).validNode()) << name;
    }
    EXPECT_TRUE(reader->readNode("model.ply", nullptr).notHandled());
}

} // namespace orbisk::test
