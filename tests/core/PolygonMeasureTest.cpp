#include "core/PolygonShapes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace orbisk::test {

namespace {

constexpr double relativeError = 1e-12;
constexpr double areaBefore = -5.0;

double areaOf(const Places& places) {
    double area = areaBefore;
    Places triangles;
    EXPECT_TRUE(Measure().measureArea(places, triangles, area));
    return area;
}

/// Measures something that has to be refused, and sees that the outputs are left alone.
void expectRefused(const Places& places) {
    double area = areaBefore;
    Places triangles = before;
    EXPECT_FALSE(Measure().measureArea(places, triangles, area));
    EXPECT_EQ(area, areaBefore);
    EXPECT_EQ(triangles, before);
    EXPECT_FALSE(Measure().signedAreaOnly(places, area));
    EXPECT_EQ(area, areaBefore);
}

} // namespace

TEST(PolygonMeasureTest, ConvexQuadrilateralIsMeasuredAndFilled) {
    double area = areaBefore;
    Places triangles = before;
    ASSERT_TRUE(Measure().measureArea(quadrilateral(), triangles, area));
    EXPECT_NEAR(area, quadrilateralArea, relativeError * quadrilateralArea);
    const Places expected = {at(0, 0), at(4, 0), at(3, 3), at(0, 0), at(3, 3), at(1, 2)};
    ASSERT_EQ(triangles.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_LT((triangles[i] - expected[i]).length(), relativeError) << i;
}

TEST(PolygonMeasureTest, AreaIsUnsignedHoweverThePolygonTurns) {
    EXPECT_NEAR(areaOf(quadrilateral()), quadrilateralArea, relativeError * quadrilateralArea);
    EXPECT_NEAR(areaOf(reversed(quadrilateral())), quadrilateralArea,
                relativeError * quadrilateralArea);
}

TEST(PolygonMeasureTest, SignedAreaOnlyKeepsTheSign) {
    Measure measure;
    double area = areaBefore;
    ASSERT_TRUE(measure.signedAreaOnly(quadrilateral(), area));
    EXPECT_NEAR(area, quadrilateralArea, relativeError * quadrilateralArea);
    ASSERT_TRUE(measure.signedAreaOnly(reversed(quadrilateral()), area));
    EXPECT_NEAR(area, -quadrilateralArea, relativeError * quadrilateralArea);
}

TEST(PolygonMeasureTest, FewerThanThreeVerticesHaveNoAreaAndKeepTheTriangles) {
    for (const Places& places : {Places(), Places{at(0, 0)}, Places{at(0, 0), at(1, 0)}}) {
        double area = areaBefore;
        Places triangles = before;
        Places vertices = places;
        EXPECT_TRUE(Measure().measureArea(places, triangles, area));
        EXPECT_EQ(area, 0.0);
        area = areaBefore;
        EXPECT_TRUE(Measure().signedAreaOnly(places, area));
        EXPECT_EQ(area, 0.0);
        area = areaBefore;
        EXPECT_TRUE(Measure().measureAreaOrDropLast(vertices, triangles, area));
        EXPECT_EQ(area, 0.0);
        EXPECT_EQ(vertices, places);
        EXPECT_EQ(triangles, before);
    }
}

TEST(PolygonMeasureTest, ThreeVerticesNeedNoPlane) {
    // On a plane through the origin, which could not be fitted.
    const Places places = {{0, 0, 0}, {3, 0, 0}, {0, 4, 0}};
    ASSERT_FALSE(Measure::fitPlane(places));
    double area = areaBefore;
    Places triangles = before;
    ASSERT_TRUE(Measure().measureArea(places, triangles, area));
    EXPECT_EQ(area, 6.0);
    EXPECT_EQ(triangles, places);
}

TEST(PolygonMeasureTest, TinyTriangleIsMeasuredWhereItLiesOblique) {
    const double size = 1e-5;
    EXPECT_NEAR(areaOf({at(0, 0), at(size, 0), at(0, size)}), slope / 2.0 * size * size, 1e-14);
    EXPECT_EQ(areaOf({{0, 0, 5}, {size, 0, 5}, {0, size, 5}}), 0.0)
        << "no component of the normal reaches the tolerance, and their product is 0";
}

TEST(PolygonMeasureTest, RectangleParallelToACoordinatePlaneIsRefused) {
    expectRefused({{1, 1, 5}, {4, 1, 5}, {4, 3, 5}, {1, 3, 5}});
    expectRefused({{1, 5, 1}, {4, 5, 1}, {4, 5, 3}, {1, 5, 3}});
    expectRefused({{5, 1, 1}, {5, 4, 1}, {5, 4, 3}, {5, 1, 3}});
}

TEST(PolygonMeasureTest, VertexPickedTwiceInARowCountsOnce) {
    Places places = quadrilateral();
    places.push_back(places.back() + osg::Vec3d(hair, -hair, 0));
    const Places picked = places;
    double area = areaBefore;
    Places triangles;
    Measure measure;
    ASSERT_TRUE(measure.measureAreaOrDropLast(places, triangles, area));
    EXPECT_NEAR(area, quadrilateralArea, 1e-4);
    EXPECT_EQ(measure.lastCleanPolygon().size(), quadrilateral().size());
    EXPECT_EQ(places, picked) << "the stored vertices stay as they were picked";
}

TEST(PolygonMeasureTest, PolygonThatCrossesItselfIsRefused) {
    expectRefused({at(0, 0), at(4, 0), at(3, 3), at(2, -1)});
}

TEST(PolygonMeasureTest, PolygonWhoseClosingEdgeCrossesIsRefused) {
    expectRefused(crossedByClosingEdge());
}

TEST(PolygonMeasureTest, PlaneThroughTheOriginIsRefused) {
    Places places = quadrilateral();
    for (osg::Vec3d& place : places)
        place.z() -= 10.0;
    expectRefused(places);
}

TEST(PolygonMeasureTest, TinyModelIsRefused) {
    Places places = quadrilateral();
    for (osg::Vec3d& place : places)
        place *= 0.01;
    expectRefused(places);
}

TEST(PolygonMeasureTest, TriangleIsRefusedAfterAPolygonWhoseClosingEdgeCrosses) {
    const Places triangle = {at(0, 0), at(4, 0), at(3, 3)};
    Measure measure;
    double area = areaBefore;
    Places triangles = before;
    ASSERT_FALSE(measure.measureArea(crossedByClosingEdge(), triangles, area));
    EXPECT_FALSE(measure.measureArea(triangle, triangles, area));
    EXPECT_FALSE(measure.signedAreaOnly(triangle, area));
    EXPECT_FALSE(measure.measureArea({}, triangles, area));
    ASSERT_TRUE(measure.measureArea(quadrilateral(), triangles, area));
    EXPECT_TRUE(measure.measureArea(triangle, triangles, area));
}

TEST(PolygonMeasureTest, DropLastAcceptsACrossingClosingEdge) {
    Places places = crossedByClosingEdge();
    double area = areaBefore;
    Places triangles = before;
    ASSERT_TRUE(Measure().measureAreaOrDropLast(places, triangles, area));
    EXPECT_EQ(places, crossedByClosingEdge());
    // The fan's two triangles turn against each other: 6.5 and -7 in (u, v).
    EXPECT_NEAR(area, 0.5 * slope, relativeError);
    // No ear is left, which is no failure.
    EXPECT_EQ(triangles, before);
}

TEST(PolygonMeasureTest, DropLastTakesOneVertexWhenNoPlaneFits) {
    Places places = {{0, 0, 0}, {4, 0, 0}, {3, 3, 0}, {1, 2, 0}};
    const Places rest(places.begin(), places.end() - 1);
    double area = areaBefore;
    Places triangles = before;
    EXPECT_FALSE(Measure().measureAreaOrDropLast(places, triangles, area));
    EXPECT_EQ(places, rest);
    EXPECT_EQ(area, areaBefore);
    EXPECT_EQ(triangles, before);
}

TEST(PolygonMeasureTest, DropLastTakesOneVertexWhenEdgesCross) {
    Places places = {at(0, 0), at(4, 0), at(3, 3), at(2, -1)};
    const Places rest(places.begin(), places.end() - 1);
    double area = areaBefore;
    Places triangles = before;
    EXPECT_FALSE(Measure().measureAreaOrDropLast(places, triangles, area));
    EXPECT_EQ(places, rest);
    EXPECT_EQ(area, areaBefore);
    EXPECT_EQ(triangles, before);
}

TEST(PolygonMeasureTest, DropLastTakesTheLastOfThreeVerticesThatTurnBack) {
    Places places = {{0, 0, 0}, {1, 2, 3}, {-1, -2, -3}};
    double area = areaBefore;
    Places triangles = before;
    EXPECT_FALSE(Measure().measureAreaOrDropLast(places, triangles, area));
    EXPECT_EQ(places, (Places{{0, 0, 0}, {1, 2, 3}}));
}

TEST(PolygonMeasureTest, AreaOfExactlyZeroSucceedsWithoutNewTriangles) {
    // Half a step further along an oblique line, so that the cleaning keeps all three.
    const Places flat = {{0, 0, 0}, {2, 2, 2}, {3, 3, 3}};
    double area = areaBefore;
    Places triangles = before;
    EXPECT_TRUE(Measure().measureArea(flat, triangles, area));
    EXPECT_EQ(area, 0.0);
    EXPECT_EQ(triangles, before);
    area = areaBefore;
    EXPECT_TRUE(Measure().signedAreaOnly(flat, area));
    EXPECT_EQ(area, 0.0);
}

TEST(PolygonMeasureTest, NotANumberIsAnAreaThatIsFilled) {
    // Nearly on a line: rounding makes the product under Heron's root negative.
    const Places needle = {{-0.2, 0.3, -0.5}, {0.8, 1.1, -1.1}, {2.3, 2.3, -2.0}};
    double area = areaBefore;
    Places triangles = before;
    EXPECT_TRUE(Measure().measureArea(needle, triangles, area));
    EXPECT_TRUE(std::isnan(area));
    EXPECT_EQ(triangles, needle);
}

TEST(PolygonMeasureTest, PolygonParallelToACoordinatePlaneIsMeasuredButNeverFilled) {
    const Places places = {{0, 0, 5}, {4, 0, 5}, {3, 3, 5}, {1, 2, 5}};
    Places triangles = before;
    EXPECT_DOUBLE_EQ(Measure::signedArea(places), 7.5);
    EXPECT_FALSE(Measure::triangulate(places, true, triangles));
    EXPECT_FALSE(Measure::triangulate(places, false, triangles));
    EXPECT_EQ(triangles, before);
    double area = areaBefore;
    ASSERT_TRUE(Measure().measureArea(places, triangles, area));
    EXPECT_NEAR(area, 7.5, relativeError);
    EXPECT_EQ(triangles, before);
}

TEST(PolygonMeasureTest, FourthVertexAfterARepeatedOneIsErasedAndNoAreaIsLeft) {
    double area = areaBefore;
    Places triangles = before;
    EXPECT_TRUE(Measure().measureArea({at(0, 0), at(4, 0), at(4, 0), at(1, 3)}, triangles, area));
    EXPECT_EQ(area, 0.0);
    EXPECT_EQ(triangles, before);
}

TEST(PolygonMeasureTest, FifthVertexAfterARepeatedOneIsRefused) {
    expectRefused({at(0, 0), at(4, 0), at(4, 0), at(3, 3), at(1, 2)});
}

TEST(PolygonMeasureTest, VerticesOffThePlaneAreMeasuredOnIt) {
    const Places places = {at(0, 0), at(6, 1), {7, 7, -3}, at(-1, 5)};
    const auto plane = Measure::fitPlane(places);
    ASSERT_TRUE(plane);
    const Places feet = Measure::projectToPlane(places, *plane);
    EXPECT_GT((feet[2] - places[2]).length(), 0.05);
    for (const osg::Vec3d& foot : feet)
        EXPECT_NEAR(*plane * foot, -1.0, relativeError);

    Measure measure;
    double area = areaBefore;
    Places triangles;
    ASSERT_TRUE(measure.measureArea(places, triangles, area));
    EXPECT_EQ(measure.lastCleanPolygon(), feet);
    EXPECT_EQ(area, Measure::signedArea(feet));
    EXPECT_EQ(triangles.size(), 2u * 3u);
    EXPECT_EQ(triangles[0], feet[0]);
}

TEST(PolygonMeasureTest, AreasHoldOnCoordinatesOfACountrysGrid) {
    const double inMap = 591.5;
    const double area = inMap * std::sqrt(1.0 + 0.25 * 0.25 + 0.125 * 0.125);
    EXPECT_NEAR(areaOf(roofFarFromTheOrigin(0.0)), area, 1e-9 * area);
    EXPECT_NEAR(areaOf(roofFarFromTheOrigin(0.05)), area, 1e-4 * area);
}

} // namespace orbisk::test
