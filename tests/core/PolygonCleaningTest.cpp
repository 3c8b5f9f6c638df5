#include "core/PolygonShapes.h"

#include <gtest/gtest.h>

#include <limits>

namespace orbisk::test {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

/// What `cleanPolygon` makes of some places, whether or not it succeeds.
Places cleaned(Places places) {
    Measure().cleanPolygon(places);
    return places;
}

} // namespace

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

} // namespace orbisk::test
