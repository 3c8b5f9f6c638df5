#include "measure/IntersectionVisitor.h"

#include "support/FixedBox.h"
#include "support/PickTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace orbisk::test {

namespace {

using Mode = osg::PrimitiveSet::Mode;

const std::vector<osg::Vec3> squareCorners{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};

osg::ref_ptr<osg::Geometry> makeSet(Mode mode, const std::vector<osg::Vec3>& vertices) {
    return makeGeometry(vertices, new osg::DrawArrays(mode, 0, static_cast<int>(vertices.size())));
}

template <typename Elements>
osg::ref_ptr<osg::PrimitiveSet> elements(Mode mode, const std::vector<unsigned int>& indices) {
    const osg::ref_ptr<Elements> set = new Elements(mode);
    for (const unsigned int index : indices)
        set->push_back(static_cast<typename Elements::value_type>(index));
    return set;
}

} // namespace

// What is hit.

TEST(IntersectionVisitorTest, StartsWithoutHitsAndVisitsAllChildren) {
    const IntersectionVisitor visitor({1, 2, 3}, {0, 0, -1});
    EXPECT_TRUE(visitor.hits().empty());
    EXPECT_EQ(visitor.getTraversalMode(), osg::NodeVisitor::TRAVERSE_ALL_CHILDREN);
}

TEST(IntersectionVisitorTest, HitIsTheOriginPlusTheDistanceAlongTheDirection) {
    const auto hit = firstHit(*makeTriangleAt(2), rayDown(0.25, 0.125));
    ASSERT_TRUE(hit);
    EXPECT_TRUE(sameBits(*hit, {0.25, 0.125, 2.0}));
}

TEST(IntersectionVisitorTest, MissHasNoHits) {
    EXPECT_TRUE(hitsOf(*makeTriangleAt(0), rayDown(2, 0)).empty());
    EXPECT_TRUE(hitsOf(*makeTriangleAt(0), rayDown(0.9, 0.9)).empty());
    EXPECT_TRUE(hitsOf(*makeTriangleAt(0), rayDown(0, -1.1)).empty());
}

TEST(IntersectionVisitorTest, BothSidesOfATriangleAreHit) {
    EXPECT_TRUE(isHit(*makeTriangles({{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}}), rayDown(0, 0)));
    EXPECT_TRUE(isHit(*makeTriangles({{-1, -1, 0}, {0, 1, 0}, {1, -1, 0}}), rayDown(0, 0)));
}

TEST(IntersectionVisitorTest, RayThroughAnEdgeHits) {
    const auto square = makeTriangles({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}});
    EXPECT_TRUE(isHit(*square, rayDown(0, 1))); // u = 0
    EXPECT_TRUE(isHit(*square, rayDown(1, 0))); // v = 0
    EXPECT_TRUE(isHit(*square, rayDown(1, 3))); // u + v = 1
    EXPECT_FALSE(isHit(*square, rayDown(-1e-12, 1)));
    EXPECT_FALSE(isHit(*square, rayDown(1, -1e-12)));
    EXPECT_FALSE(isHit(*square, rayDown(1, 3.0000000001)));
}

TEST(IntersectionVisitorTest, RayThroughACornerHits) {
    // The sphere around a single triangle, rounded, would end just before its corners.
    const auto square =
        makeTriangles({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {-9, -9, 0}, {-8, -9, 0}, {-9, -8, 0}});
    for (const osg::Vec3d& corner : {osg::Vec3d(0, 0, 0), osg::Vec3d(4, 0, 0), osg::Vec3d(0, 4, 0)})
        EXPECT_TRUE(isHit(*square, rayDown(corner.x(), corner.y())));
}

TEST(IntersectionVisitorTest, RayParallelToATriangleNeverHitsIt) {
    const auto upright = makeTriangles({{0, -1, -1}, {0, 1, -1}, {0, 0, 1}});
    EXPECT_FALSE(isHit(*upright, rayDown(0, 0)));
    EXPECT_FALSE(isHit(*makeTriangleAt(0), rayBetween({-5, 0, 0}, {5, 0, 0})));
}

TEST(IntersectionVisitorTest, DeterminantBelowTheLimitCountsAsParallel) {
    // Seen along z the determinant is the product of the two legs.
    const auto below = makeTriangles({{0, 0, 0}, {0.0003125f, 0, 0}, {0, 0.0003125f, 0}});
    const auto above = makeTriangles({{0, 0, 0}, {0.00032f, 0, 0}, {0, 0.00032f, 0}});
    EXPECT_FALSE(isHit(*below, rayDown(0.0001, 0.0001)));
    EXPECT_TRUE(isHit(*above, rayDown(0.0001, 0.0001)));
}

TEST(IntersectionVisitorTest, DeterminantOfExactlyTheLimitHits) {
    osg::ref_ptr<osg::Geometry> exact = makeDoubleGeometry(
        {{0, 0, 0}, {1e-7, 0, 0}, {0, 1, 0}}, new osg::DrawArrays(Mode::TRIANGLES, 0, 3));
    EXPECT_TRUE(isHit(*exact, rayDown(0, 0.5)));
    const double less = std::nextafter(1e-7, 0.0);
    osg::ref_ptr<osg::Geometry> smaller = makeDoubleGeometry(
        {{0, 0, 0}, {less, 0, 0}, {0, 1, 0}}, new osg::DrawArrays(Mode::TRIANGLES, 0, 3));
    EXPECT_FALSE(isHit(*smaller, rayDown(0, 0.5)));
}

TEST(IntersectionVisitorTest, DegenerateTrianglesAreNotHit) {
    EXPECT_FALSE(isHit(*makeTriangles({{-1, 0, 0}, {1, 0, 0}, {0, 0, 0}}), rayDown(0, 0)));
    EXPECT_FALSE(isHit(*makeTriangles({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}), rayDown(0, 0)));
}

TEST(IntersectionVisitorTest, TriangleBehindTheOriginIsHitToo) {
    // Its centre lies before the origin, so that the sphere lets it through, one triangle behind.
    const auto both =
        makeTriangles({{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}, {-1, -1, 14}, {1, -1, 14}, {0, 1, 14}});
    const std::vector<osg::Vec3d> hits = hitsOf(*both, rayDown(0, 0));
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits.front(), osg::Vec3d(0, 0, 14));
    EXPECT_EQ(hits.back(), osg::Vec3d(0, 0, 0));
}

TEST(IntersectionVisitorTest, ZeroDirectionHitsNothing) {
    EXPECT_FALSE(isHit(*makeTriangleAt(0), {{0, 0, 0}, {0, 0, 0}}));
}

TEST(IntersectionVisitorTest, TriangleWithACoordinateThatIsNoNumberPassesEveryComparison) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto broken =
        makeTriangles({{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}, {nan, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const std::vector<osg::Vec3d> hits = hitsOf(*broken, rayDown(0, 0));
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits.front(), osg::Vec3d(0, 0, 0));
    EXPECT_TRUE(hits.back().isNaN());
}

// Which hit is kept in front.

TEST(IntersectionVisitorTest, NearestHitIsFirstWhateverTheOrder) {
    const auto near = makeTriangleAt(3);
    const auto far = makeTriangleAt(-3);
    for (const auto& model : {groupOf({near, far}), groupOf({far, near})}) {
        const std::vector<osg::Vec3d> hits = hitsOf(*model, rayDown(0, 0));
        ASSERT_EQ(hits.size(), 2u);
        EXPECT_EQ(hits.front(), osg::Vec3d(0, 0, 3));
    }
}

TEST(IntersectionVisitorTest, FartherHitsAreAppendedAndNearerOnesPutInFront) {
    const auto model =
        groupOf({makeTriangleAt(0), makeTriangleAt(-1), makeTriangleAt(2), makeTriangleAt(1)});
    const std::vector<osg::Vec3d> hits = hitsOf(*model, rayDown(0, 0));
    ASSERT_EQ(hits.size(), 4u);
    const double heights[] = {2, 0, -1, 1};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(hits[i].z(), heights[i]);
}

TEST(IntersectionVisitorTest, OfEquallyNearHitsTheFirstStays) {
    // Both planes are met at the same distance; the first triangle gives the hit.
    const auto model = groupOf({makeTriangleAt(1), makeTriangleAt(1)});
    const std::vector<osg::Vec3d> hits = hitsOf(*model, rayDown(0, 0));
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_TRUE(sameBits(hits[0], hits[1]));
}

TEST(IntersectionVisitorTest, HitBehindTheOriginAlwaysGoesToTheFront) {
    // Far behind, with a near one in front: distance counts with its sign.
    const auto model = makeTriangles({{-1, -1, 9},
                                      {1, -1, 9},
                                      {0, 1, 9},
                                      {-1, -1, 17},
                                      {1, -1, 17},
                                      {0, 1, 17},
                                      {-1, -1, -20},
                                      {1, -1, -20},
                                      {0, 1, -20}});
    const auto hit = firstHit(*model, rayDown(0, 0));
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->z(), 17);
}

TEST(IntersectionVisitorTest, NearerHitAfterOneBehindTakesItsPlaceAgain) {
    // The front's distance is its plain distance, 7: a later hit at 1 lies nearer, one at 30 not.
    const auto model = makeTriangles({{-1, -1, 17},
                                      {1, -1, 17},
                                      {0, 1, 17},
                                      {-1, -1, -20},
                                      {1, -1, -20},
                                      {0, 1, -20},
                                      {-1, -1, 9},
                                      {1, -1, 9},
                                      {0, 1, 9}});
    const std::vector<osg::Vec3d> hits = hitsOf(*model, rayDown(0, 0));
    ASSERT_EQ(hits.size(), 3u);
    EXPECT_EQ(hits[0].z(), 9);
    EXPECT_EQ(hits[1].z(), 17);
    EXPECT_EQ(hits[2].z(), -20);
}

TEST(IntersectionVisitorTest, DistanceCountsInLengthsOfTheDirection) {
    const auto model = groupOf({makeTriangleAt(0), makeTriangleAt(4)});
    const PickRay ray{{0, 0, 10}, {0, 0, -4}};
    const std::vector<osg::Vec3d> hits = hitsOf(*model, ray);
    ASSERT_EQ(hits.size(), 2u);
    EXPECT_EQ(hits[0], osg::Vec3d(0, 0, 4));
}

// Primitive sets.

TEST(IntersectionVisitorTest, IndicesOfEveryWidthAreExamined) {
    const std::vector<unsigned int> indices{0, 1, 2, 0, 2, 3};
    for (const auto& set : {elements<osg::DrawElementsUByte>(Mode::TRIANGLES, indices),
                            elements<osg::DrawElementsUShort>(Mode::TRIANGLES, indices),
                            elements<osg::DrawElementsUInt>(Mode::TRIANGLES, indices)}) {
        const auto square = makeGeometry(squareCorners, set);
        EXPECT_TRUE(isHit(*square, rayDown(3, 1)));
        EXPECT_TRUE(isHit(*square, rayDown(1, 3)));
        EXPECT_FALSE(isHit(*square, rayDown(5, 1)));
    }
}

TEST(IntersectionVisitorTest, StripsAreExamined) {
    const auto strip =
        makeSet(Mode::TRIANGLE_STRIP, {{0, 0, 0}, {0, 4, 0}, {4, 0, 0}, {4, 4, 0}, {8, 0, 0}});
    for (const double x : {1.0, 3.0, 5.0})
        EXPECT_EQ(hitsOf(*strip, rayDown(x, 1.5)).size(), 1u) << x;
    EXPECT_FALSE(isHit(*strip, rayDown(7.5, 3)));
}

TEST(IntersectionVisitorTest, EverySecondTriangleOfAStripIsTurned) {
    // Where rounding tells the orders of the corners apart, the turned one is the one that counts.
    const std::vector<osg::Vec3> corners{
        {0.1f, 0.2f, 0.3f}, {4.7f, 0.9f, 1.1f}, {1.3f, 5.1f, 2.3f}, {6.1f, 5.9f, 0.7f}};
    const auto strip = makeSet(Mode::TRIANGLE_STRIP, corners);
    const auto turned = makeTriangles({corners[1], corners[3], corners[2]});
    const auto straight = makeTriangles({corners[1], corners[2], corners[3]});
    int told = 0;
    for (int i = 0; i < 100; ++i) {
        const PickRay ray = rayBetween({0.37, 0.11, 9.7}, {4.2 + 0.005 * i, 4.3 - 0.003 * i, 1.2});
        const auto hit = firstHit(*strip, ray);
        ASSERT_TRUE(hit);
        EXPECT_TRUE(sameBits(*hit, *firstHit(*turned, ray)));
        if (!sameBits(*hit, *firstHit(*straight, ray)))
            ++told;
    }
    EXPECT_GT(told, 0);
}

TEST(IntersectionVisitorTest, FansAreExamined) {
    const auto fan =
        makeSet(Mode::TRIANGLE_FAN, {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}, {-4, 4, 0}});
    EXPECT_EQ(hitsOf(*fan, rayDown(3, 1)).size(), 1u);
    EXPECT_EQ(hitsOf(*fan, rayDown(1, 3)).size(), 1u);
    EXPECT_EQ(hitsOf(*fan, rayDown(-1, 3)).size(), 1u);
    EXPECT_FALSE(isHit(*fan, rayDown(-3, 1)));
}

TEST(IntersectionVisitorTest, StripsOfFewerThanThreeAndFansOfFewerThanTwoAreSkipped) {
    std::vector<osg::Vec3> corners;
    for (std::size_t count = 0; count < 3; ++count) {
        corners.assign(squareCorners.begin(), squareCorners.begin() + static_cast<int>(count));
        EXPECT_FALSE(isHit(*makeSet(Mode::TRIANGLE_STRIP, corners), rayDown(0, 0)));
        EXPECT_FALSE(isHit(*makeSet(Mode::TRIANGLE_FAN, corners), rayDown(0, 0)));
    }
}

TEST(IntersectionVisitorTest, ModelOfQuadsOrPolygonsCannotBePicked) {
    for (const Mode mode : {Mode::QUADS, Mode::QUAD_STRIP, Mode::POLYGON})
        EXPECT_FALSE(isHit(*makeSet(mode, squareCorners), rayDown(1, 1))) << mode;
}

TEST(IntersectionVisitorTest, PointsAndLinesAreIgnored) {
    for (const Mode mode : {Mode::POINTS, Mode::LINES, Mode::LINE_STRIP, Mode::LINE_LOOP})
        EXPECT_FALSE(isHit(*makeSet(mode, squareCorners), rayDown(0, 0))) << mode;
}

TEST(IntersectionVisitorTest, OtherKindsOfPrimitiveSetsAreSkipped) {
    const osg::ref_ptr<osg::DrawArrayLengths> lengths =
        new osg::DrawArrayLengths(Mode::TRIANGLE_STRIP, 0);
    lengths->push_back(4);
    EXPECT_FALSE(isHit(*makeGeometry(squareCorners, lengths), rayDown(1, 1)));
}

TEST(IntersectionVisitorTest, SetsAreExaminedOneAfterTheOther) {
    const auto both = makeGeometry(squareCorners, new osg::DrawArrays(Mode::QUADS, 0, 4));
    both->addPrimitiveSet(new osg::DrawArrays(Mode::TRIANGLES, 0, 3));
    both->addPrimitiveSet(elements<osg::DrawElementsUByte>(Mode::TRIANGLES, {0, 2, 3}));
    EXPECT_TRUE(isHit(*both, rayDown(3, 1)));
    EXPECT_TRUE(isHit(*both, rayDown(1, 3)));
}

TEST(IntersectionVisitorTest, ArraysDrawnFromTheMiddleUseTheirOwnVertices) {
    const auto geometry = makeGeometry({{50, 50, 0}, {0, 0, 1}, {4, 0, 1}, {0, 4, 1}},
                                       new osg::DrawArrays(Mode::TRIANGLES, 1, 3));
    const auto hit = firstHit(*geometry, rayDown(1, 1));
    ASSERT_TRUE(hit);
    EXPECT_EQ(hit->z(), 1);
}

TEST(IntersectionVisitorTest, IndexBeyondTheVerticesIsAnError) {
    for (const osg::ref_ptr<osg::PrimitiveSet>& set :
         {elements<osg::DrawElementsUInt>(Mode::TRIANGLES, {0, 1, 2, 0, 2, 4}),
          osg::ref_ptr<osg::PrimitiveSet>(new osg::DrawArrays(Mode::TRIANGLES, 2, 3)),
          osg::ref_ptr<osg::PrimitiveSet>(new osg::DrawArrays(Mode::TRIANGLES, -1, 3))}) {
        const auto geometry = makeGeometry(squareCorners, set);
        // The library itself would read beyond the array to work out the bound.
        geometry->setComputeBoundingBoxCallback(new FixedBox({0, 0, 0, 4, 4, 0}));
        EXPECT_THROW(hitsOf(*geometry, rayDown(1, 1)), std::out_of_range);
    }
}

TEST(IntersectionVisitorTest, CountBelowZeroIsNoTriangle) {
    const auto geometry = makeGeometry(squareCorners, new osg::DrawArrays(Mode::TRIANGLES, 0, -3));
    geometry->setComputeBoundingBoxCallback(new FixedBox({0, 0, 0, 4, 4, 0}));
    EXPECT_FALSE(isHit(*geometry, rayDown(1, 1)));
}

TEST(IntersectionVisitorTest, IncompleteLastTriangleOfAListIsAnError) {
    const auto element = makeGeometry(
        squareCorners, elements<osg::DrawElementsUInt>(Mode::TRIANGLES, {0, 1, 2, 0, 2}));
    EXPECT_THROW(hitsOf(*element, rayDown(1, 1)), std::out_of_range);
    const auto array = makeGeometry(squareCorners, new osg::DrawArrays(Mode::TRIANGLES, 0, 4));
    EXPECT_THROW(hitsOf(*array, rayDown(1, 1)), std::out_of_range);
}

TEST(IntersectionVisitorTest, ErrorInADrawableThatTheRayPassesByIsNotMet) {
    const auto wrong = makeGeometry(
        squareCorners, elements<osg::DrawElementsUInt>(Mode::TRIANGLES, {0, 1, 2, 0, 2, 4}));
    wrong->setComputeBoundingBoxCallback(new FixedBox({0, 0, 0, 4, 4, 0}));
    EXPECT_FALSE(isHit(*wrong, rayDown(20, 20)));
}

TEST(IntersectionVisitorTest, GeometryWithoutVerticesOrSetsIsSkipped) {
    const osg::ref_ptr<osg::Geometry> empty = new osg::Geometry;
    // Its sphere is of radius minus one around the origin, and so may still be met.
    EXPECT_FALSE(isHit(*empty, rayDown(0, 0)));
    empty->addPrimitiveSet(new osg::DrawArrays(Mode::TRIANGLES, 0, 3));
    EXPECT_FALSE(isHit(*empty, rayDown(0, 0)));
    const auto setless = makeTriangleAt(0);
    setless->removePrimitiveSet(0);
    EXPECT_FALSE(isHit(*setless, rayDown(0, 0)));
}

TEST(IntersectionVisitorTest, VerticesOfOtherTypesAreSkipped) {
    const osg::ref_ptr<osg::Vec4Array> fours = new osg::Vec4Array;
    for (const osg::Vec3& corner : squareCorners)
        fours->push_back(osg::Vec4(corner, 1));
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(fours);
    geometry->addPrimitiveSet(new osg::DrawArrays(Mode::TRIANGLES, 0, 3));
    EXPECT_FALSE(isHit(*geometry, rayDown(2, 1)));
}

} // namespace orbisk::test
