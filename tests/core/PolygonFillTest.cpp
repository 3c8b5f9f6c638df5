#include "core/PolygonShapes.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

constexpr double relativeError = 1e-12;

} // namespace

TEST(SignedAreaTest, FewerThanThreeVerticesHaveNone) {
    EXPECT_EQ(Measure::signedArea({}), 0.0);
    EXPECT_EQ(Measure::signedArea({at(0, 0), at(1, 0)}), 0.0);
}

TEST(SignedAreaTest, ReflexCornersSubtract) {
    // The corner at (1, 1) cuts into the triangle of the others.
    const Places places = {at(0, 0), at(4, 0), at(1, 1), at(0, 4)};
    EXPECT_NEAR(Measure::signedArea(places), 4.0 * slope, relativeError);
    EXPECT_NEAR(Measure::signedArea(reversed(places)), -4.0 * slope, relativeError);
}

TEST(SignedAreaTest, ProductOfTheNormalsComponentsGivesTheSign) {
    // Normals (1, 1, 1) and (1, -1, -1) add, (-1, -1, -1) and (-1, 1, 1) subtract.
    EXPECT_GT(Measure::signedArea({{0, 0, 0}, {1, 0, -1}, {0, 1, -1}}), 0.0);
    EXPECT_GT(Measure::signedArea({{0, 0, 0}, {1, 1, 0}, {1, 0, 1}}), 0.0);
    EXPECT_LT(Measure::signedArea({{0, 0, 0}, {0, 1, -1}, {1, 0, -1}}), 0.0);
    EXPECT_LT(Measure::signedArea({{0, 0, 0}, {1, 0, 1}, {1, 1, 0}}), 0.0);
}

TEST(SignedAreaTest, FirstComponentThatIsThereGivesTheSignOfAProductOfZero) {
    const osg::Vec3d x(1, 0, 0);
    const osg::Vec3d y(0, 1, 0);
    const osg::Vec3d z(0, 0, 1);
    const auto signOf = [](const osg::Vec3d& a, const osg::Vec3d& b) {
        return Measure::signedArea({osg::Vec3d(), a, b}) > 0.0 ? 1 : -1;
    };
    EXPECT_EQ(signOf(y, z), 1);
    EXPECT_EQ(signOf(z, y), -1);
    EXPECT_EQ(signOf(z, x), 1);
    EXPECT_EQ(signOf(x, z), -1);
    EXPECT_EQ(signOf(x, y), 1);
    EXPECT_EQ(signOf(y, x), -1);
    // Normals (-1, 5, 0) and (0, -1, 5): the first one wins, not the largest.
    EXPECT_EQ(signOf({5, 1, 0}, {0, 0, -1}), -1);
    EXPECT_EQ(signOf({0, 5, 1}, {-1, 0, 0}), -1);
}

TEST(SignedAreaTest, ComponentBelowTheToleranceGivesNoSign) {
    // Normal (-1e-7, 0, 1).
    EXPECT_GT(Measure::signedArea({{0, 0, 0}, {1, 0, 1e-7}, {0, 1, 0}}), 0.0);
    // Normal (-1e-5, 0, 1).
    EXPECT_LT(Measure::signedArea({{0, 0, 0}, {1, 0, 1e-5}, {0, 1, 0}}), 0.0);
}

TEST(SignedAreaTest, FlatTriangleEndsTheSum) {
    // Without the second vertex's repetition all three triangles count.
    const Places whole = {at(0, 0), at(4, 0), at(4, 2), at(3, 4), at(0, 4)};
    EXPECT_NEAR(Measure::signedArea(whole), 15.0 * slope, relativeError);
    const Places repeating = {at(0, 0), at(4, 0), at(4, 2), at(4, 2), at(3, 4), at(0, 4)};
    EXPECT_NEAR(Measure::signedArea(repeating), 4.0 * slope, relativeError);
}

TEST(SignedAreaTest, TriangleSmallerThanTheToleranceEndsTheSum) {
    // Its normal is (0, 0, 5e-7), in a plane of constant z.
    const Places places = {{0, 0, 0}, {1, 0, 0}, {1, 5e-7, 0}, {1, 1, 0}};
    EXPECT_EQ(Measure::signedArea(places), 0.0);
}

TEST(TriangulateTest, FewerThanThreeVerticesFail) {
    Places triangles = before;
    EXPECT_FALSE(Measure::triangulate({}, true, triangles));
    EXPECT_FALSE(Measure::triangulate({at(0, 0), at(1, 0)}, true, triangles));
    EXPECT_EQ(triangles, before);
}

TEST(TriangulateTest, ThreeVerticesAreTheTriangleWhateverTheirTurn) {
    const Places places = {at(0, 0), at(0, 1), at(1, 0)};
    for (const bool positive : {true, false}) {
        Places triangles = before;
        EXPECT_TRUE(Measure::triangulate(places, positive, triangles));
        EXPECT_EQ(triangles, places);
    }
}

TEST(TriangulateTest, ConvexPolygonBecomesAFan) {
    Places triangles;
    ASSERT_TRUE(Measure::triangulate(quadrilateral(), true, triangles));
    EXPECT_EQ(triangles, (Places{at(0, 0), at(4, 0), at(3, 3), at(0, 0), at(3, 3), at(1, 2)}));
}

TEST(TriangulateTest, ClockwisePolygonIsGoneThroughBackwards) {
    Places triangles;
    ASSERT_TRUE(Measure::triangulate(reversed(quadrilateral()), false, triangles));
    EXPECT_EQ(triangles, (Places{at(0, 0), at(4, 0), at(3, 3), at(0, 0), at(3, 3), at(1, 2)}));
}

TEST(TriangulateTest, WrongTurnHasNoEarAndLeavesTheTriangles) {
    Places triangles = before;
    EXPECT_FALSE(Measure::triangulate(quadrilateral(), false, triangles));
    EXPECT_FALSE(Measure::triangulate(reversed(quadrilateral()), true, triangles));
    EXPECT_EQ(triangles, before);
}

TEST(TriangulateTest, ReflexCornerIsClippedLate) {
    Places triangles;
    // The second vertex is reflex, the third and the fourth are ears.
    ASSERT_TRUE(Measure::triangulate({at(0, 0), at(2, 1), at(4, 0), at(2, 5)}, true, triangles));
    EXPECT_EQ(triangles, (Places{at(2, 1), at(4, 0), at(2, 5), at(0, 0), at(2, 1), at(2, 5)}));
}

TEST(TriangulateTest, FirstVertexIsNeverAnEarsTip) {
    const Places places = {at(2, 1), at(2, 2), at(2, 0), at(4, 1), at(0, 5)};
    ASSERT_TRUE(Measure::isEar(places, {0, 1, 2, 3, 4}, {4, 0, 1}));
    Places triangles = before;
    EXPECT_FALSE(Measure::triangulate(places, true, triangles));
    EXPECT_EQ(triangles, before);
    const Places beginningElsewhere = {at(0, 5), at(2, 1), at(2, 2), at(2, 0), at(4, 1)};
    EXPECT_TRUE(Measure::triangulate(beginningElsewhere, true, triangles));
}

TEST(TriangulateTest, EarThatAnotherOneFreesIsClipped) {
    // The second corner holds the last vertex, which is the first to be clipped.
    const Places places = {at(2, 1), at(3, 4), at(0, 1), at(5, 0), at(2, 2)};
    ASSERT_FALSE(Measure::isEar(places, {0, 1, 2, 3, 4}, {0, 1, 2}));
    ASSERT_TRUE(Measure::isEar(places, {0, 1, 2, 3}, {0, 1, 2}));
    Places triangles;
    ASSERT_TRUE(Measure::triangulate(places, true, triangles));
    EXPECT_EQ(triangles, (Places{at(5, 0), at(2, 2), at(2, 1), at(2, 1), at(3, 4), at(0, 1),
                                 at(2, 1), at(0, 1), at(5, 0)}));
}

TEST(IsEarTest, ConvexCornerWithoutVerticesInItIsOne) {
    const std::vector<std::size_t> all = {0, 1, 2, 3};
    EXPECT_TRUE(Measure::isEar(quadrilateral(), all, {0, 1, 2}));
    EXPECT_TRUE(Measure::isEar(quadrilateral(), all, {2, 3, 0}));
    EXPECT_FALSE(Measure::isEar(quadrilateral(), {3, 2, 1, 0}, {0, 1, 2})) << "reflex";
}

TEST(IsEarTest, VertexInTheTriangleOrOnItsEdgePreventsIt) {
    const std::vector<std::size_t> all = {0, 1, 2, 3};
    EXPECT_FALSE(Measure::isEar({at(0, 0), at(4, 0), at(0, 4), at(1, 1)}, all, {0, 1, 2}));
    EXPECT_FALSE(Measure::isEar({at(0, 0), at(4, 0), at(0, 4), at(0, 2)}, all, {0, 1, 2}));
    EXPECT_FALSE(Measure::isEar({at(0, 0), at(4, 0), at(0, 4), at(0, 0)}, all, {0, 1, 2}));
    EXPECT_TRUE(Measure::isEar({at(0, 0), at(4, 0), at(0, 4), at(-1, 2)}, all, {0, 1, 2}));
}

TEST(IsEarTest, OnlyVerticesOfTheListCount) {
    const Places places = {at(0, 0), at(4, 0), at(0, 4), at(1, 1), at(-1, 2)};
    EXPECT_TRUE(Measure::isEar(places, {0, 1, 2, 4}, {0, 1, 2}));
    EXPECT_TRUE(Measure::isEar(places, {0, 1, 2}, {0, 1, 2}));
}

TEST(IsEarTest, FlatCornerAndCornerInACoordinatePlaneAreNone) {
    EXPECT_FALSE(Measure::isEar({at(0, 0), at(1, 0), at(2, 0)}, {0, 1, 2}, {0, 1, 2}));
    EXPECT_FALSE(Measure::isEar({{0, 0, 5}, {4, 0, 5}, {0, 4, 5}}, {0, 1, 2}, {0, 1, 2}));
}

TEST(PointInTriangleTest, EdgesAndCornersBelongToIt) {
    const osg::Vec3d a = at(0, 0);
    const osg::Vec3d b = at(4, 0);
    const osg::Vec3d c = at(0, 4);
    for (const osg::Vec3d& point : {at(1, 1), at(2, 0), at(2, 2), at(0, 2), a, b, c}) {
        EXPECT_TRUE(Measure::pointInTriangle(point, a, b, c));
        EXPECT_TRUE(Measure::pointInTriangle(point, a, c, b));
    }
    for (const osg::Vec3d& point : {at(-1, 1), at(1, -1), at(3, 3), at(5, 0), at(-1, 0)}) {
        EXPECT_FALSE(Measure::pointInTriangle(point, a, b, c));
        EXPECT_FALSE(Measure::pointInTriangle(point, a, c, b));
    }
}

TEST(PointInTriangleTest, DegenerateTriangleHoldsEveryPoint) {
    EXPECT_TRUE(Measure::pointInTriangle(at(100, 7), at(0, 0), at(1, 1), at(2, 2)));
}

} // namespace orbisk::test
