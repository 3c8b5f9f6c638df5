// Random polygons with integer coordinates, measured by the program and by a slow reference that
// is exact on them.

#include "core/PolygonReference.h"
#include "measure/PolygonMeasure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <sstream>

namespace orbisk::test {

namespace {

using Exact = PolygonReference<std::int64_t>;
using Close = PolygonReference<long double>;
using Place = Exact::Place;
using Places = Exact::Places;
using Measure = PolygonMeasure;

/// A place in a plane's own coordinates.
struct Flat {
    int u;
    int v;
};
using FlatPolygon = std::vector<Flat>;

int turn(const Flat& a, const Flat& b, const Flat& c) {
    return (b.u - a.u) * (c.v - a.v) - (b.v - a.v) * (c.u - a.u);
}

/// Twice the area, positive counterclockwise.
int doubleArea(const FlatPolygon& polygon) {
    int sum = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Flat& a = polygon[i];
        const Flat& b = polygon[(i + 1) % polygon.size()];
        sum += a.u * b.v - a.v * b.u;
    }
    return sum;
}

bool isBetween(const Flat& a, const Flat& b, const Flat& c) {
    return std::min(a.u, b.u) <= c.u && c.u <= std::max(a.u, b.u) && std::min(a.v, b.v) <= c.v &&
           c.v <= std::max(a.v, b.v);
}

/// Whether two segments have a point in common; parallel ones need not.
bool touch(const Flat& a, const Flat& b, const Flat& c, const Flat& d) {
    const auto side = [](int value) { return (value > 0) - (value < 0); };
    const int abc = side(turn(a, b, c));
    const int abd = side(turn(a, b, d));
    const int cda = side(turn(c, d, a));
    const int cdb = side(turn(c, d, b));
    if (abc * abd < 0 && cda * cdb < 0)
        return true;
    return (abc == 0 && isBetween(a, b, c)) || (abd == 0 && isBetween(a, b, d)) ||
           (cda == 0 && isBetween(c, d, a)) || (cdb == 0 && isBetween(c, d, b));
}

/// Whether no edge touches another but its neighbours, and none turns back.
bool isSimple(const FlatPolygon& polygon) {
    const std::size_t n = polygon.size();
    const auto vertex = [&](std::size_t i) { return polygon[i % n]; };
    for (std::size_t i = 0; i < n; ++i) {
        if (isBetween(vertex(i), vertex(i + 1), vertex(i + 2)) &&
            turn(vertex(i), vertex(i + 1), vertex(i + 2)) == 0)
            return false;
        for (std::size_t j = i + 2; j < n; ++j)
            if ((j + 1) % n != i && touch(vertex(i), vertex(i + 1), vertex(j), vertex(j + 1)))
                return false;
    }
    return true;
}

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

/// A plane in space: where its coordinates begin, and its two axes.
struct Plane {
    Place origin;
    Place u;
    Place v;

    Place at(const Flat& flat) const {
        Place place = origin;
        for (std::size_t axis = 0; axis < 3; ++axis)
            place[axis] += flat.u * u[axis] + flat.v * v[axis];
        return place;
    }

    Places at(const FlatPolygon& polygon) const {
        Places places;
        for (const Flat& flat : polygon)
            places.push_back(at(flat));
        return places;
    }

    Place normal() const { return Exact::cross(u, v); }

    /// How a counterclockwise polygon on it is taken: 1 adds, -1 subtracts, 0 needs a closer look.
    int sense() const {
        int sign = 1;
        for (const std::int64_t component : normal())
            sign *= (component > 0) - (component < 0);
        return sign;
    }
};

osg::Vec3d vectorOf(const Place& place) {
    return osg::Vec3d(static_cast<double>(place[0]), static_cast<double>(place[1]),
                      static_cast<double>(place[2]));
}

Measure::Polygon vectorsOf(const Places& places) {
    Measure::Polygon vectors;
    for (const Place& place : places)
        vectors.push_back(vectorOf(place));
    return vectors;
}

std::string described(const Places& places) {
    std::ostringstream text;
    for (const Place& place : places)
        text << '(' << place[0] << ", " << place[1] << ", " << place[2] << ") ";
    return text.str();
}

/// Draws numbers, places and polygons; the same ones in every run and on every machine.
class Dice {
public:
    int number(int low, int high) {
        return low + static_cast<int>(m_bits() % static_cast<unsigned>(high - low + 1));
    }

    bool one(int outOf) { return number(1, outOf) == 1; }

    Place place(int size) {
        return {number(-size, size), number(-size, size), number(-size, size)};
    }

    Flat flat(int size) { return {number(-size, size), number(-size, size)}; }

    /// A plane that isn't parallel to an axis.
    Plane obliquePlane() {
        Plane plane;
        do
            plane = {place(9), place(2), place(2)};
        while (plane.sense() == 0);
        return plane;
    }

    FlatPolygon scattered(int count, int size) {
        FlatPolygon polygon;
        for (int i = 0; i < count; ++i)
            polygon.push_back(flat(size));
        return polygon;
    }

    /// Simple, counterclockwise, in general concave, grown by pulling out one edge after the other.
    FlatPolygon simple(int count, int size) {
        FlatPolygon polygon;
        do
            polygon = scattered(3, size);
        while (doubleArea(polygon) <= 0);
        for (int tries = 0; static_cast<int>(polygon.size()) < count && tries < 20 * count;
             ++tries) {
            FlatPolygon grown = polygon;
            grown.insert(grown.begin() + number(0, static_cast<int>(grown.size()) - 1), flat(size));
            if (isSimple(grown) && doubleArea(grown) > 0)
                polygon = grown;
        }
        return turned(polygon);
    }

    /// The corners of some places' convex hull, counterclockwise.
    FlatPolygon convex(int count, int size) {
        FlatPolygon places;
        do
            places = scattered(count, size);
        while (std::all_of(places.begin(), places.end(), [&](const Flat& place) {
            return turn(places[0], places[1], place) == 0;
        }));
        FlatPolygon hull;
        Flat current =
            *std::min_element(places.begin(), places.end(), [](const Flat& a, const Flat& b) {
                return a.u != b.u ? a.u < b.u : a.v < b.v;
            });
        const Flat first = current;
        do {
            hull.push_back(current);
            Flat next = current;
            for (const Flat& place : places) {
                const int side = turn(current, next, place);
                if ((next.u == current.u && next.v == current.v) || side < 0 ||
                    (side == 0 && isBetween(current, place, next)))
                    next = place;
            }
            current = next;
        } while (current.u != first.u || current.v != first.v);
        return turned(hull);
    }

    /// The same polygon, beginning anywhere.
    FlatPolygon turned(FlatPolygon polygon) {
        std::rotate(polygon.begin(),
                    polygon.begin() + number(0, static_cast<int>(polygon.size()) - 1),
                    polygon.end());
        return polygon;
    }

    /// Some places of the vertex list are repeated, or get a vertex in line with the last two.
    void spoil(Places& places) {
        const int count = number(1, 2);
        for (int i = 0; i < count; ++i) {
            // Mostly near the end, where it is looked for.
            const std::size_t n = places.size();
            const std::size_t where =
                one(2) ? n : static_cast<std::size_t>(number(2, static_cast<int>(n)));
            Place inserted = places[where - 1];
            const int steps = number(-2, 3);
            for (std::size_t axis = 0; axis < 3; ++axis)
                inserted[axis] += steps * (places[where - 1][axis] - places[where - 2][axis]);
            places.insert(places.begin() + static_cast<std::ptrdiff_t>(where), inserted);
        }
        if (one(3))
            places.push_back(places.front());
    }

    /// A polygon of one of all kinds: convex, concave, crossing itself, nearly flat, scattered in
    /// space, with repeated and collinear vertices.
    Places polygon() {
        const int count = number(3, 9);
        const Plane plane = one(8) ? Plane{place(9), {1, 0, 0}, {0, 1, 0}} : obliquePlane();
        Places places;
        switch (number(0, 4)) {
        case 0:
            places = plane.at(convex(count, 6));
            break;
        case 1:
            places = plane.at(simple(count, 6));
            break;
        case 2:
            places = plane.at(scattered(count, number(2, 6)));
            break;
        case 3:
            places = plane.at(simple(count, 6));
            for (Place& each : places)
                each[2] += number(-1, 1);
            break;
        default:
            for (int i = 0; i < count; ++i)
                places.push_back(place(4));
        }
        if (one(2))
            std::reverse(places.begin(), places.end());
        if (one(3))
            spoil(places);
        return places;
    }

private:
    std::mt19937 m_bits{20260411};
};

} // namespace

TEST(PolygonMeasurePropertyTest, TriplesAreClassifiedAsInExactArithmetic) {
    Dice dice;
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
    Dice dice;
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

TEST(PolygonMeasurePropertyTest, PointsAreInTrianglesAsInExactArithmetic) {
    Dice dice;
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
    Dice dice;
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
    Dice dice;
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
    Dice dice;
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
    Dice dice;
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

TEST(PolygonMeasurePropertyTest, EarsAreThoseOfLookingAtEveryCornerAnew) {
    Dice dice;
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

TEST(PolygonMeasurePropertyTest, EarsOfLargePolygonsAreTheSameToo) {
    Dice dice;
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

TEST(PolygonMeasurePropertyTest, TrianglesCoverASimplePolygonExactlyOnce) {
    Dice dice;
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

namespace {

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
    Dice dice;
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
