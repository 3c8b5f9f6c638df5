// Random polygons with integer coordinates, measured by the program and by a slow reference that
// is exact on them.

#include "core/PolygonDice.h"
#include "measure/PolygonMeasure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace orbisk::test {

namespace {

using Place = Exact::Place;
using Places = Exact::Places;
using Measure = PolygonMeasure;

} // namespace

TEST(PolygonMeasurePropertyTest, TriplesAreClassifiedAsInExactArithmetic) {
    PolygonDice dice;
    Exact reference;
    std::array<int, 6> seen{};
    for (int i = 0; i < 40000; ++i) {
        const Place p = dice.place(5);
        Place q = dice.place(5);
        Place r = dice.place(5);
        if (dice.one(4))
            q = p;
        if (!dice.one(3)) {
            const int steps = dice.number(-3, 3);
            for (std::size_t axis = 0; axis < 3; ++axis)
                r[axis] = q[axis] + steps * (q[axis] - p[axis]);
        }
        const int expected = reference.classify(p, q, r);
        ++seen[static_cast<std::size_t>(expected)];
        ASSERT_EQ(static_cast<int>(Measure::classifyTriple(vectorOf(p), vectorOf(q), vectorOf(r))),
                  expected)
            << described({p, q, r});
    }
    for (const int count : seen)
        EXPECT_GT(count, 500);
}

TEST(PolygonMeasurePropertyTest, SegmentsMeetAsInExactArithmetic) {
    PolygonDice dice;
    Exact reference;
    int meeting = 0;
    const int cases = 40000;
    for (int i = 0; i < cases; ++i) {
        std::array<Place, 4> ends;
        for (Place& end : ends)
            end = dice.place(3);
        // Also where fewer projections can decide.
        if (dice.one(2)) {
            const auto axis = static_cast<std::size_t>(dice.number(0, 2));
            for (Place& end : ends)
                end[axis] = 1;
        }
        const bool expected = reference.meet(ends[0], ends[1], ends[2], ends[3]);
        meeting += expected;
        ASSERT_EQ(Measure::segmentsIntersect(vectorOf(ends[0]), vectorOf(ends[1]),
                                             vectorOf(ends[2]), vectorOf(ends[3])),
                  expected)
            << described({ends.begin(), ends.end()});
    }
    EXPECT_GT(meeting, cases / 10);
    EXPECT_LT(meeting, cases / 2);
}

namespace {

using Equations = std::array<std::array<std::int64_t, 4>, 3>;

/// Elimination that stays in integers: each division by the last pivot comes out even.
/// @return the determinant; the right sides over it are the solution.
std::int64_t solve(Equations& m) {
    std::int64_t lastPivot = 1;
    int sign = 1;
    for (std::size_t k = 0; k < 3; ++k) {
        std::size_t row = k;
        while (row < 3 && m[row][k] == 0)
            ++row;
        if (row == 3)
            return 0;
        if (row != k) {
            std::swap(m[row], m[k]);
            sign = -sign;
        }
        const std::int64_t pivot = m[k][k];
        for (std::size_t i = 0; i < 3; ++i) {
            if (i == k)
                continue;
            const std::int64_t factor = m[i][k];
            for (std::size_t j = 0; j < 4; ++j)
                m[i][j] = (pivot * m[i][j] - factor * m[k][j]) / lastPivot;
        }
        lastPivot = pivot;
    }
    for (auto& row : m)
        row[3] *= sign;
    return sign * lastPivot;
}

Equations normalEquations(const Places& places) {
    Equations m{};
    for (const Place& place : places)
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t j = 0; j < 3; ++j)
                m[i][j] += place[i] * place[j];
            m[i][3] -= place[i];
        }
    return m;
}

} // namespace

TEST(PolygonMeasurePropertyTest, PlanesAreThoseOfIntegerElimination) {
    PolygonDice dice;
    int refused = 0;
    const int cases = 15000;
    for (int i = 0; i < cases; ++i) {
        const Places places = dice.polygon();
        Equations equations = normalEquations(places);
        const std::int64_t determinant = solve(equations);
        const auto plane = Measure::fitPlane(vectorsOf(places));
        ASSERT_EQ(plane.has_value(), determinant != 0) << described(places);
        refused += !plane;
        for (int axis = 0; plane && axis < 3; ++axis)
            ASSERT_DOUBLE_EQ((*plane)[axis],
                             static_cast<double>(equations[static_cast<std::size_t>(axis)][3]) /
                                 static_cast<double>(determinant))
                << described(places);
    }
    EXPECT_GT(refused, 100);
    EXPECT_LT(refused, cases / 2);
}

TEST(PolygonMeasurePropertyTest, PolygonsAreCleanedAsInExactArithmetic) {
    PolygonDice dice;
    int succeeded = 0;
    int shortened = 0;
    int closed = 0;
    for (int i = 0; i < 40000; ++i) {
        const Places places = dice.polygon();
        Exact reference;
        Places expected = places;
        const bool good = reference.clean(expected);
        succeeded += good;
        shortened += expected.size() < places.size();

        Measure measure;
        Measure::Polygon polygon = vectorsOf(places);
        ASSERT_EQ(measure.cleanPolygon(polygon), good) << described(places);
        ASSERT_EQ(polygon, vectorsOf(expected)) << described(places);
        ASSERT_EQ(measure.lastCleanPolygon(), vectorsOf(reference.lastClean()));
        const bool crosses = reference.closingEdgeCrosses(places);
        closed += !crosses;
        ASSERT_EQ(Measure::closingEdgeCrosses(vectorsOf(places)), crosses) << described(places);
    }
    EXPECT_GT(succeeded, 10000);
    EXPECT_GT(shortened, 5000);
    EXPECT_GT(closed, 10000);
}

TEST(PolygonMeasurePropertyTest, AreasAreThoseOfExactNormals) {
    PolygonDice dice;
    for (int i = 0; i < 30000; ++i) {
        const Places places = dice.polygon();
        Exact reference;
        const auto expected = static_cast<double>(reference.signedArea(places));
        ASSERT_NEAR(Measure::signedArea(vectorsOf(places)), expected,
                    1e-8 * (1.0 + std::abs(expected)))
            << described(places);
    }
}

TEST(PolygonMeasurePropertyTest, AreasOnAPlaneAreThoseOfItsCoordinates) {
    PolygonDice dice;
    for (int i = 0; i < 15000; ++i) {
        const Plane plane = dice.obliquePlane();
        FlatPolygon polygon =
            dice.one(2) ? dice.convex(dice.number(3, 9), 6) : dice.scattered(dice.number(3, 9), 6);
        // A flat triangle would end the sum.
        for (std::size_t j = 2; j < polygon.size(); ++j)
            if (turn(polygon[0], polygon[j - 1], polygon[j]) == 0)
                polygon.resize(j);
        const Place normal = plane.normal();
        const double unit = std::sqrt(static_cast<double>(Exact::dot(normal, normal)));
        ASSERT_NEAR(Measure::signedArea(vectorsOf(plane.at(polygon))),
                    plane.sense() * unit * doubleArea(polygon) / 2.0, 1e-8 * unit)
            << described(plane.at(polygon));
    }
}

namespace {

using Close = PolygonReference<long double>;

/// The feet on the plane of integer elimination, in extended precision.
std::optional<Close::Places> feetOf(const Places& places) {
    Close::Places feet;
    if (places.size() == 3) {
        for (const Place& place : places)
            feet.push_back({static_cast<long double>(place[0]), static_cast<long double>(place[1]),
                            static_cast<long double>(place[2])});
        return feet;
    }
    Equations equations = normalEquations(places);
    const auto determinant = static_cast<long double>(solve(equations));
    if (determinant == 0.0L)
        return std::nullopt;
    Close::Place plane;
    for (std::size_t axis = 0; axis < 3; ++axis)
        plane[axis] = static_cast<long double>(equations[axis][3]) / determinant;
    for (const Place& place : places) {
        Close::Place foot = {static_cast<long double>(place[0]), static_cast<long double>(place[1]),
                             static_cast<long double>(place[2])};
        const long double way = (Close::dot(plane, foot) + 1.0L) / Close::dot(plane, plane);
        for (std::size_t axis = 0; axis < 3; ++axis)
            foot[axis] -= way * plane[axis];
        feet.push_back(foot);
    }
    return feet;
}

} // namespace

TEST(PolygonMeasurePropertyTest, PickedAreasAreMeasuredAsInExtendedPrecision) {
    PolygonDice dice;
    int compared = 0;
    int accepted = 0;
    int filled = 0;
    const int cases = 40000;
    for (int i = 0; i < cases; ++i) {
        const Places places = dice.polygon();
        Close reference;
        const auto feet = feetOf(places);
        const auto expected = feet ? reference.measure(*feet) : std::nullopt;
        if (reference.isDoubtful())
            continue;
        ++compared;
        double area = -5.0;
        const Measure::Polygon before = {osg::Vec3d(7, 7, 7)};
        Measure::Polygon triangles = before;
        ASSERT_EQ(Measure().measureArea(vectorsOf(places), triangles, area), expected.has_value())
            << described(places);
        if (!expected) {
            ASSERT_EQ(area, -5.0);
            ASSERT_EQ(triangles, before);
            continue;
        }
        ++accepted;
        const auto expectedArea = static_cast<double>(expected->area);
        ASSERT_NEAR(area, expectedArea, 1e-7 * (1.0 + expectedArea)) << described(places);
        if (!expected->triangles) {
            ASSERT_EQ(triangles, before) << described(places);
            continue;
        }
        ++filled;
        ASSERT_EQ(triangles.size(), expected->triangles->size()) << described(places);
        for (std::size_t j = 0; j < triangles.size(); ++j)
            for (int axis = 0; axis < 3; ++axis)
                ASSERT_NEAR(
                    triangles[j][axis],
                    static_cast<double>((*expected->triangles)[j][static_cast<std::size_t>(axis)]),
                    1e-7)
                    << described(places);
    }
    EXPECT_GT(compared, cases / 3);
    EXPECT_GT(accepted, cases / 10);
    EXPECT_GT(filled, cases / 10);
}

} // namespace orbisk::test
