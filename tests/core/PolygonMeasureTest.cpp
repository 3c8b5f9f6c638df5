#include "measure/PolygonMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace orbisk::test {

namespace {

using Places = std::vector<osg::Vec3d>;
using Measure = PolygonMeasure;

constexpr double relativeError = 1e-12;
/// Less than the tolerance, so that it counts as the same place.
constexpr double hair = 0.9e-6;
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
const double slope = std::sqrt(3.0);

/// A place on the plane x + y + z = 10. Going around counterclockwise in (u, v) is positive, areas
/// are `slope` times those in (u, v).
osg::Vec3d at(double u, double v) {
    return {u, v, 10.0 - u - v};
}

/// Convex, counterclockwise, without parallel sides; 7.5 in (u, v).
Places quadrilateral() {
    return {at(0, 0), at(4, 0), at(3, 3), at(1, 2)};
}
const double quadrilateralArea = 7.5 * slope;

/// An accepted polygon whose closing edge crosses the second edge.
Places crossedByClosingEdge() {
    return {at(0, 0), at(4, 1), at(3, 4), at(5, 2)};
}

/// What outputs hold before a call, so that it shows if they are changed.
const Places before = {osg::Vec3d(7, 7, 7)};
constexpr double areaBefore = -5.0;

Places reversed(const Places& places) {
    return {places.rbegin(), places.rend()};
}

/// What `cleanPolygon` makes of some places, whether or not it succeeds.
Places cleaned(Places places) {
    Measure().cleanPolygon(places);
    return places;
}

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

// --- fitPlane
// -------------------------------------------------------------------------------------

TEST(FitPlaneTest, GivesThePlaneOfVerticesThatHaveOne) {
    const auto plane = Measure::fitPlane(quadrilateral());
    ASSERT_TRUE(plane);
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR((*plane)[axis], -0.1, relativeError) << axis;
}

TEST(FitPlaneTest, GivesTheLeastSquaresOfOthers) {
    // Normal equations: 2 a = -2, 2 b = -2, 3 c = -1.
    const auto plane =
        Measure::fitPlane({{1, 1, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1}, {0, 0, -1}});
    ASSERT_TRUE(plane);
    EXPECT_NEAR(plane->x(), -2.0 / 3.0, relativeError);
    EXPECT_NEAR(plane->y(), -2.0 / 3.0, relativeError);
    EXPECT_NEAR(plane->z(), -1.0 / 3.0, relativeError);
}

/// Corners of a roof of 20 m by 30 m on a country's grid, on a plane but for `roughness`.
Places roofFarFromTheOrigin(double roughness) {
    const auto corner = [roughness](double x, double y, int side) {
        return osg::Vec3d(5e5 + x, 4e6 + y, 100 + 0.25 * x - 0.125 * y + side * roughness);
    };
    return {corner(-9, -16, 1), corner(11, -14, -1), corner(10, 15, 1), corner(-10, 14, -1)};
}

TEST(FitPlaneTest, HoldsOnCoordinatesOfACountrysGrid) {
    const Places corners = roofFarFromTheOrigin(0.0);
    const auto plane = Measure::fitPlane(corners);
    ASSERT_TRUE(plane);
    for (const osg::Vec3d& corner : corners)
        EXPECT_NEAR((*plane * corner + 1.0) / plane->length(), 0.0, 1e-3);
    osg::Vec3d normal = *plane;
    normal.normalize();
    osg::Vec3d exact(0.25, -0.125, -1.0);
    exact.normalize();
    EXPECT_LT((normal ^ exact).length(), 1e-5);
}

TEST(PolygonMeasureTest, AreasHoldOnCoordinatesOfACountrysGrid) {
    const double inMap = 591.5;
    const double area = inMap * std::sqrt(1.0 + 0.25 * 0.25 + 0.125 * 0.125);
    EXPECT_NEAR(areaOf(roofFarFromTheOrigin(0.0)), area, 1e-9 * area);
    EXPECT_NEAR(areaOf(roofFarFromTheOrigin(0.05)), area, 1e-4 * area);
}

TEST(FitPlaneTest, DeterminantIsComparedAbsolutely) {
    // One vertex on each axis: the determinant is the sixth power of their distance, and
    // 0.1 to the sixth is 1e-6.
    const auto axes = [](double distance) {
        return Places{{distance, 0, 0}, {0, distance, 0}, {0, 0, distance}};
    };
    EXPECT_TRUE(Measure::fitPlane(axes(0.1001)));
    EXPECT_FALSE(Measure::fitPlane(axes(0.0999)));
}

TEST(FitPlaneTest, VerticesOnALineHaveNone) {
    EXPECT_FALSE(Measure::fitPlane({{1, 2, 3}, {2, 4, 5}, {3, 6, 7}, {4, 8, 9}}));
    EXPECT_FALSE(Measure::fitPlane({}));
}

// --- projectToPlane
// -------------------------------------------------------------------------------

TEST(ProjectToPlaneTest, FewerThanThreeVerticesVanish) {
    EXPECT_TRUE(Measure::projectToPlane({}, {0, 0, -1}).empty());
    EXPECT_TRUE(Measure::projectToPlane({{1, 2, 3}, {4, 5, 6}}, {0, 0, -1}).empty());
}

TEST(ProjectToPlaneTest, ThreeVerticesStayWhereTheyAre) {
    const Places places = {{1, 2, 3}, {4, 5, 6}, {7, 8, 10}};
    EXPECT_EQ(Measure::projectToPlane(places, {0, 0, -1}), places);
}

TEST(ProjectToPlaneTest, MoreVerticesGoStraightToThePlane) {
    // The plane z = 2.
    EXPECT_EQ(Measure::projectToPlane({{1, 2, 3}, {4, 5, 6}, {7, 8, 10}, {1, 1, -1}}, {0, 0, -0.5}),
              (Places{{1, 2, 2}, {4, 5, 2}, {7, 8, 2}, {1, 1, 2}}));
}

// --- classifyTriple
// -------------------------------------------------------------------------------

TEST(ClassifyTripleTest, ClassesHaveFixedNumbers) {
    EXPECT_EQ(static_cast<int>(TripleClass::FirstTwoEqual), 0);
    EXPECT_EQ(static_cast<int>(TripleClass::StandsOrShort), 1);
    EXPECT_EQ(static_cast<int>(TripleClass::AllEqual), 2);
    EXPECT_EQ(static_cast<int>(TripleClass::TurnsBack), 3);
    EXPECT_EQ(static_cast<int>(TripleClass::GoesStraightOn), 4);
    EXPECT_EQ(static_cast<int>(TripleClass::Corner), 5);
}

TEST(ClassifyTripleTest, KnowsRepeatedVerticesByTheTolerance) {
    const osg::Vec3d p(1, 2, 3);
    const osg::Vec3d almost = p + osg::Vec3d(hair, -hair, hair);
    const osg::Vec3d other(4, 6, 9);
    EXPECT_EQ(Measure::classifyTriple(p, almost, other), TripleClass::FirstTwoEqual);
    EXPECT_EQ(Measure::classifyTriple(p, almost, p), TripleClass::AllEqual);
    EXPECT_EQ(Measure::classifyTriple(p, other, other + osg::Vec3d(hair, -hair, hair)),
              TripleClass::StandsOrShort);
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1e-6, 0, 0}, {5e-6, 1, 0}), TripleClass::Corner)
        << "the tolerance itself is a distance";
}

TEST(ClassifyTripleTest, WholeStepsAlongAnObliqueLineAreCollinear) {
    const osg::Vec3d step(1, 2, 3);
    for (const int count : {1, 2, 3, 1000})
        EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, step, step + step * count),
                  TripleClass::GoesStraightOn)
            << count;
    for (const int count : {-1, -2, -1000})
        EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, step, step + step * count),
                  TripleClass::TurnsBack)
            << count;
}

TEST(ClassifyTripleTest, BrokenStepsAlongAnObliqueLineAreCorners) {
    const osg::Vec3d step(1, 2, 3);
    for (const double count : {0.5, 1.5, 2.25, -0.5, -1.5})
        EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, step, step + step * count),
                  TripleClass::Corner)
            << count;
}

TEST(ClassifyTripleTest, BrokenStepsAlongAnAxisAreCollinear) {
    // The other axes have nothing left over, and the deciding one isn't looked at again.
    for (int axis = 0; axis < 3; ++axis) {
        osg::Vec3d step;
        step[axis] = 2.0;
        const auto classOf = [&](double count) {
            return Measure::classifyTriple({0, 0, 0}, step, step + step * count);
        };
        EXPECT_EQ(classOf(0.5), TripleClass::StandsOrShort) << axis;
        EXPECT_EQ(classOf(-0.5), TripleClass::StandsOrShort) << axis;
        EXPECT_EQ(classOf(1.5), TripleClass::GoesStraightOn) << axis;
        EXPECT_EQ(classOf(-1.5), TripleClass::TurnsBack) << axis;
    }
}

TEST(ClassifyTripleTest, RatioIsCutTowardsZero) {
    // On the deciding axis alone: 1.999999 is one step, not two.
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1, 1, 0}, {2.999999, 2, 0}),
              TripleClass::GoesStraightOn);
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1, 1, 0}, {2.999999, 3, 0}), TripleClass::Corner);
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1, 1, 0}, {0.000001, 1, 0}),
              TripleClass::StandsOrShort);
}

TEST(ClassifyTripleTest, FirstAxisWithADistanceDecides) {
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {0, 1, 2}, {0, 3, 6}),
              TripleClass::GoesStraightOn);
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {hair, 0, 2}, {2 * hair, 0, 6}),
              TripleClass::GoesStraightOn);
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {0, 1, 2}, {1, 3, 6}), TripleClass::Corner);
}

TEST(ClassifyTripleTest, RatioThatNoIntHoldsTurnsBack) {
    const double largest = std::numeric_limits<std::int32_t>::max();
    const auto classOf = [](double ratio) {
        return Measure::classifyTriple({0, 0, 0}, {1, 0, 0}, {1 + ratio, 0, 0});
    };
    EXPECT_EQ(classOf(largest), TripleClass::GoesStraightOn);
    EXPECT_EQ(classOf(largest + 0.5), TripleClass::GoesStraightOn);
    EXPECT_EQ(classOf(largest + 1), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(1e15), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(infinity), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(-largest - 1), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(-1e15), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(-infinity), TripleClass::TurnsBack);
    EXPECT_EQ(classOf(notANumber), TripleClass::TurnsBack);
}

TEST(ClassifyTripleTest, RatioThatNoIntHoldsBecomesTheLeastOne) {
    // Both steps rise alike, so that on y there is much left over of any ratio but the right one.
    const double step = 1e10;
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1, 1, 0}, {1 + step, 1 + step, 0}),
              TripleClass::Corner);
    const double least = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(Measure::classifyTriple({0, 0, 0}, {1, 1, 0}, {1 + step, 1 + least, 0}),
              TripleClass::TurnsBack);
}

TEST(ClassifyTripleTest, DistanceThatIsNoNumberIsACorner) {
    EXPECT_EQ(Measure::classifyTriple({notANumber, 0, 0}, {0, 0, 0}, {1, 0, 0}),
              TripleClass::Corner);
}

// --- cleanPolygon
// ---------------------------------------------------------------------------------

TEST(CleanPolygonTest, FewerThanThreeVerticesAreLeftAlone) {
    const Places same = {at(0, 0), at(0, 0)};
    EXPECT_EQ(cleaned(same), same);
    Measure measure;
    Places places = same;
    EXPECT_TRUE(measure.cleanPolygon(places));
    EXPECT_TRUE(measure.lastCleanPolygon().empty());
}

TEST(CleanPolygonTest, PolygonWithoutFaultIsKeptAsItIs) {
    Measure measure;
    Places places = quadrilateral();
    EXPECT_TRUE(measure.cleanPolygon(places));
    EXPECT_EQ(places, quadrilateral());
    EXPECT_EQ(measure.lastCleanPolygon(), quadrilateral());
}

TEST(CleanPolygonTest, FewerThanFourLeftAreNotKept) {
    Measure measure;
    Places places = quadrilateral();
    ASSERT_TRUE(measure.cleanPolygon(places));
    Places three = {at(0, 0), at(5, 0), at(0, 5)};
    EXPECT_TRUE(measure.cleanPolygon(three));
    EXPECT_EQ(measure.lastCleanPolygon(), quadrilateral());
    Places threeAtTheEnd = {at(0, 0), at(5, 0), at(0, 5), at(0, 5)};
    EXPECT_TRUE(measure.cleanPolygon(threeAtTheEnd));
    EXPECT_EQ(threeAtTheEnd.size(), 3u);
    EXPECT_EQ(measure.lastCleanPolygon(), quadrilateral());
    Places threeAtTheSeam = {at(0, 0), at(5, 0), at(0, 5), at(0, 0)};
    EXPECT_TRUE(measure.cleanPolygon(threeAtTheSeam));
    EXPECT_EQ(threeAtTheSeam.size(), 3u);
    EXPECT_EQ(measure.lastCleanPolygon(), quadrilateral());
}

TEST(CleanPolygonTest, EndRepeatsTheLastVertex) {
    EXPECT_EQ(cleaned({at(0, 0), at(4, 0), at(3, 3), at(1, 2), at(1, 2)}), quadrilateral());
}

TEST(CleanPolygonTest, EndRepeatsTheVertexBeforeTheLastAndLosesTheLast) {
    EXPECT_EQ(cleaned({at(0, 0), at(4, 0), at(3, 3), at(3, 3), at(1, 2)}),
              (Places{at(0, 0), at(4, 0), at(3, 3), at(3, 3)}));
}

TEST(CleanPolygonTest, EndRepeatsTheLastVertexTwice) {
    EXPECT_EQ(cleaned({at(0, 0), at(4, 0), at(3, 3), at(1, 2), at(1, 2), at(1, 2)}),
              quadrilateral());
    EXPECT_EQ(cleaned({at(1, 2), at(1, 2), at(1, 2)}), Places{at(1, 2)});
}

TEST(CleanPolygonTest, EndAtTwiceTheStepLosesTheVertexBetween) {
    EXPECT_EQ(cleaned({at(0, 0), at(5, 1), at(3, 4), at(2, 3), at(0, 1)}),
              (Places{at(0, 0), at(5, 1), at(3, 4), at(0, 1)}));
}

TEST(CleanPolygonTest, EndAtTheSameStepLosesTheVertexBetween) {
    EXPECT_EQ(cleaned({at(0, 0), at(5, 1), at(3, 4), at(2, 3), at(1, 2)}),
              (Places{at(0, 0), at(5, 1), at(3, 4), at(1, 2)}));
}

TEST(CleanPolygonTest, EndAtHalfTheStepKeepsTheVertexBetween) {
    const Places places = {at(0, 0), at(7, 1), at(5, 6), at(3, 4), at(2, 3)};
    EXPECT_EQ(cleaned(places), places);
}

TEST(CleanPolygonTest, EndThatTurnsBackLosesTheVertexBetweenAndFails) {
    Measure measure;
    Places places = {at(0, 0), at(5, 1), at(3, 4), at(2, 3), at(4, 5)};
    EXPECT_FALSE(measure.cleanPolygon(places));
    EXPECT_EQ(places, (Places{at(0, 0), at(5, 1), at(3, 4), at(4, 5)}));
    EXPECT_TRUE(measure.lastCleanPolygon().empty());
}

TEST(CleanPolygonTest, EndIsLookedAtOnceOnly) {
    EXPECT_EQ(cleaned({at(0, 0), at(5, 1), at(1, 3), at(1, 3), at(1, 3), at(1, 3)}),
              (Places{at(0, 0), at(5, 1), at(1, 3), at(1, 3)}));
}

TEST(CleanPolygonTest, RepeatedVertexInTheMiddleIsKeptAndItsEdgeCountsAsCrossing) {
    Measure measure;
    Places places = {at(0, 0), at(4, 0), at(4, 1), at(4, 1), at(3, 3), at(1, 2)};
    const Places all = places;
    EXPECT_FALSE(measure.cleanPolygon(places));
    EXPECT_EQ(places, all);
}

TEST(CleanPolygonTest, LastVertexOnTheFirstIsErased) {
    Places places = quadrilateral();
    places.push_back(places.front());
    EXPECT_EQ(cleaned(places), quadrilateral());
}

TEST(CleanPolygonTest, FirstVertexOnTheSecondIsErased) {
    Places places = quadrilateral();
    places.insert(places.begin(), places.front());
    EXPECT_EQ(cleaned(places), quadrilateral());
}

TEST(CleanPolygonTest, LastAndFirstVertexOnTheSecondAreErased) {
    Places places = quadrilateral();
    places.insert(places.begin(), places.front());
    places.push_back(places.front());
    EXPECT_EQ(cleaned(places), quadrilateral());
}

TEST(CleanPolygonTest, SeamThatTurnsBackFailsAndErasesNothing) {
    Measure measure;
    Places places = {at(0, 0), at(2, 2), at(5, 0), at(3, 4), at(1, 1)};
    const Places all = places;
    EXPECT_FALSE(measure.cleanPolygon(places));
    EXPECT_EQ(places, all);
    EXPECT_TRUE(measure.lastCleanPolygon().empty());
}

TEST(CleanPolygonTest, SeamThatGoesStraightOnLosesTheVertexBeforeTheLast) {
    EXPECT_EQ(cleaned({at(0, 0), at(2, 2), at(1, 5), at(-2, 4), at(-3, 1), at(-1, -1)}),
              (Places{at(0, 0), at(2, 2), at(1, 5), at(-2, 4), at(-1, -1)}));
}

TEST(CleanPolygonTest, CrossingOfTheClosingEdgeIsNotLookedFor) {
    Measure measure;
    Places places = crossedByClosingEdge();
    EXPECT_TRUE(measure.cleanPolygon(places));
    EXPECT_EQ(measure.lastCleanPolygon(), crossedByClosingEdge());
}

TEST(CleanPolygonTest, CrossingKeepsTheLastGoodPolygon) {
    Measure measure;
    Places places = quadrilateral();
    ASSERT_TRUE(measure.cleanPolygon(places));
    Places crossing = {at(0, 0), at(4, 0), at(3, 3), at(2, -1)};
    EXPECT_FALSE(measure.cleanPolygon(crossing));
    EXPECT_EQ(measure.lastCleanPolygon(), quadrilateral());
}

// --- segmentsIntersect, closingEdgeCrosses
// --------------------------------------------------------

TEST(SegmentsIntersectTest, CrossingAndDistantSegments) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {0, 2, 0}, {2, 0, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {3, 2, 0}, {5, 0, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({3, 2, 0}, {5, 0, 0}, {0, 0, 0}, {2, 2, 0}));
}

TEST(SegmentsIntersectTest, TouchingAtAnEndIsMeeting) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {2, 2, 0}, {4, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {1, 1, 0}, {4, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({1, 1, 0}, {4, 0, 0}, {0, 0, 0}, {2, 2, 0}));
}

TEST(SegmentsIntersectTest, HeightsDoNotMatter) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 0}, {0, 2, 100}, {2, 0, 200}));
}

TEST(SegmentsIntersectTest, SegmentsOverEachOtherAreSeenFromTheSide) {
    // Parallel from above; from along x they cross or don't, whatever their x.
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {0, 2, 2}, {9, 0, 2}, {9, 2, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {0, 2, 2}, {0, 3, 2}, {0, 5, 0}));
}

TEST(SegmentsIntersectTest, SegmentsOfEqualYAreSeenAlongY) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 0, 2}, {0, 7, 2}, {2, 7, 0}));
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 0, 2}, {3, 0, 2}, {5, 0, 0}));
}

TEST(SegmentsIntersectTest, ViewAlongXComesBeforeTheOneAlongY) {
    // Parallel from above; from one side they cross, from the other they don't.
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {0, 3, 2}, {2, 5, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {3, 0, 2}, {5, 2, 0}));
}

TEST(SegmentsIntersectTest, FirstProjectionThatIsNotParallelDecidesAlone) {
    // They meet from the side, not from above.
    EXPECT_FALSE(Measure::segmentsIntersect({0, 0, 0}, {2, 2, 2}, {3, 2, 2}, {5, 0, 0}));
}

TEST(SegmentsIntersectTest, ParallelSegmentsMeetHoweverFarApart) {
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1000, 0, 0}, {1001, 2, 3}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1001, 2, 3}, {1000, 0, 0}));
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1, 2, 3}, {1000, 0, 0}, {1000, 0, 0}));
}

TEST(SegmentsIntersectTest, ParallelIsMeasuredAbsolutely) {
    // A right angle, but of segments so short that their determinant is nothing.
    EXPECT_TRUE(Measure::segmentsIntersect({0, 0, 0}, {1e-3, 0, 0}, {500, 0, 0}, {500, 1e-3, 0}));
    EXPECT_FALSE(
        Measure::segmentsIntersect({0, 0, 0}, {1.1e-3, 0, 0}, {500, 0, 0}, {500, 1e-3, 0}));
}

TEST(ClosingEdgeCrossesTest, NeverWithFewerThanFourVertices) {
    EXPECT_FALSE(Measure::closingEdgeCrosses({}));
    EXPECT_FALSE(Measure::closingEdgeCrosses({at(0, 0), at(1, 1), at(2, 2)}));
}

TEST(ClosingEdgeCrossesTest, LooksAtEveryEdgeButItsNeighbours) {
    EXPECT_FALSE(Measure::closingEdgeCrosses(quadrilateral()));
    EXPECT_TRUE(Measure::closingEdgeCrosses(crossedByClosingEdge()));
    // Only with the edge from the third to the fourth vertex.
    EXPECT_TRUE(Measure::closingEdgeCrosses({at(0, 0), at(9, 1), at(7, 5), at(5, -2), at(8, -1)}));
}

TEST(ClosingEdgeCrossesTest, ParallelEdgeCrosses) {
    EXPECT_TRUE(Measure::closingEdgeCrosses({at(0, 0), at(4, 0), at(4, 3), at(0, 3)}));
}

// --- signedArea
// -----------------------------------------------------------------------------------

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

// --- triangulate
// ----------------------------------------------------------------------------------

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
