// Random polygons with integer coordinates, cut into triangles by the program and by a slow
// reference that is exact on them.

#include "core/PolygonDice.h"
#include "measure/PolygonMeasure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace orbisk::test {

namespace {

using Places = Exact::Places;
using Measure = PolygonMeasure;

/// Whether two counterclockwise triangles share no more than their borders: then the line along
/// an edge of one of them keeps them apart.
bool areApart(const Flat* a, const Flat* b) {
    const auto keepsApart = [](const Flat* one, const Flat* other) {
        for (int i = 0; i < 3; ++i)
            if (std::all_of(other, other + 3, [&](const Flat& corner) {
                    return turn(one[i], one[(i + 1) % 3], corner) <= 0;
                }))
                return true;
        return false;
    };
    return keepsApart(a, b) || keepsApart(b, a);
}

} // namespace

TEST(PolygonTrianglesPropertyTest, PointsAreInTrianglesAsInExactArithmetic) {
    PolygonDice dice;
    Exact reference;
    int inside = 0;
    const int cases = 20000;
    for (int i = 0; i < cases; ++i) {
        const Plane plane = dice.obliquePlane();
        const Places places = plane.at(dice.scattered(4, 3));
        const bool expected = reference.inside(places[0], places[1], places[2], places[3]);
        inside += expected;
        ASSERT_EQ(Measure::pointInTriangle(vectorOf(places[0]), vectorOf(places[1]),
                                           vectorOf(places[2]), vectorOf(places[3])),
                  expected)
            << described(places);
    }
    EXPECT_GT(inside, cases / 10);
    EXPECT_LT(inside, cases / 2);
}

TEST(PolygonTrianglesPropertyTest, EarsAreThoseOfLookingAtEveryCornerAnew) {
    PolygonDice dice;
    int ended = 0;
    const int cases = 25000;
    for (int i = 0; i < cases; ++i) {
        const Places places =
            dice.one(50) ? dice.obliquePlane().at(dice.scattered(40, 30)) : dice.polygon();
        const bool positive = dice.one(2);
        Exact reference;
        const auto expected = reference.triangulate(places, positive);
        ended += expected.has_value();
        const Measure::Polygon before = {osg::Vec3d(7, 7, 7)};
        Measure::Polygon triangles = before;
        ASSERT_EQ(Measure::triangulate(vectorsOf(places), positive, triangles),
                  expected.has_value())
            << described(places);
        ASSERT_EQ(triangles, expected ? vectorsOf(*expected) : before) << described(places);
    }
    EXPECT_GT(ended, cases / 5);
    EXPECT_LT(ended, cases);
}

TEST(PolygonTrianglesPropertyTest, EarsOfLargePolygonsAreTheSameToo) {
    PolygonDice dice;
    for (int i = 0; i < 60; ++i) {
        const Plane plane = dice.obliquePlane();
        const Places places = plane.at(dice.simple(60, 40));
        Exact reference;
        const auto expected = reference.triangulate(places, plane.sense() > 0);
        Measure::Polygon triangles;
        ASSERT_TRUE(expected) << described(places);
        ASSERT_TRUE(Measure::triangulate(vectorsOf(places), plane.sense() > 0, triangles));
        ASSERT_EQ(triangles, vectorsOf(*expected)) << described(places);
    }
}

TEST(PolygonTrianglesPropertyTest, TrianglesCoverASimplePolygonExactlyOnce) {
    PolygonDice dice;
    const int cases = 6000;
    int filled = 0;
    for (int i = 0; i < cases; ++i) {
        const Plane plane = dice.obliquePlane();
        FlatPolygon polygon =
            dice.one(3) ? dice.convex(dice.number(4, 12), 8) : dice.simple(dice.number(4, 12), 8);
        const bool clockwise = dice.one(2);
        if (clockwise)
            std::reverse(polygon.begin(), polygon.end());
        const Measure::Polygon places = vectorsOf(plane.at(polygon));
        Measure::Polygon triangles;
        const bool ended =
            Measure::triangulate(places, (plane.sense() > 0) != clockwise, triangles);
        ASSERT_TRUE(ended) << described(plane.at(polygon));
        if (polygon.size() < 4)
            continue;
        ++filled;

        FlatPolygon corners;
        for (const osg::Vec3d& corner : triangles) {
            const auto vertex = std::find(places.begin(), places.end(), corner);
            ASSERT_NE(vertex, places.end());
            corners.push_back(polygon[static_cast<std::size_t>(vertex - places.begin())]);
        }
        ASSERT_EQ(corners.size(), 3 * (polygon.size() - 2));
        int sum = 0;
        for (std::size_t a = 0; a < corners.size(); a += 3) {
            // What turns positively in space may turn the other way in the plane's coordinates.
            if (plane.sense() < 0)
                std::swap(corners[a], corners[a + 1]);
            const int size = turn(corners[a], corners[a + 1], corners[a + 2]);
            ASSERT_GT(size, 0) << described(plane.at(polygon));
            sum += size;
            for (std::size_t b = 0; b < a; b += 3)
                ASSERT_TRUE(areApart(&corners[a], &corners[b])) << described(plane.at(polygon));
        }
        ASSERT_EQ(sum, std::abs(doubleArea(polygon))) << described(plane.at(polygon));
    }
    EXPECT_GT(filled, cases * 8 / 10);
}

} // namespace orbisk::test
