#include "measure/PolygonMeasure.h"

#include "measure/DoubleDouble.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <utility>

namespace orbisk {

namespace {

using Polygon = PolygonMeasure::Polygon;
using VertexList = std::vector<std::size_t>;

constexpr int axisCount = 3;
constexpr std::size_t triangleVertices = 3;
/// Below this many vertices no edge has another one that isn't its neighbour.
constexpr std::size_t fewestThatCross = 4;

bool isNothing(const osg::Vec3d& step) {
    return std::abs(step.x()) < PolygonMeasure::tolerance &&
           std::abs(step.y()) < PolygonMeasure::tolerance &&
           std::abs(step.z()) < PolygonMeasure::tolerance;
}

std::optional<int> firstAxisAbove(const osg::Vec3d& step) {
    for (int axis = 0; axis < axisCount; ++axis)
        if (std::abs(step[axis]) >= PolygonMeasure::tolerance)
            return axis;
    return std::nullopt;
}

/// Cut off towards zero. What doesn't fit becomes the least integer, as in the conversion of x86.
std::int32_t wholePart(double ratio) {
    using Limits = std::numeric_limits<std::int32_t>;
    const bool fits = ratio > Limits::min() - 1.0 && ratio < Limits::max() + 1.0;
    return fits ? static_cast<std::int32_t>(ratio) : Limits::min();
}

/// A vector of twice the precision.
using LongVector = std::array<DoubleDouble, axisCount>;

DoubleDouble dot(const LongVector& a, const LongVector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

LongVector cross(const LongVector& a, const LongVector& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

template <class Container>
void eraseAt(Container& container, std::size_t position) {
    container.erase(container.begin() + static_cast<std::ptrdiff_t>(position));
}

/// Whether the last three vertices leave room for a polygon.
bool cleanEnd(Polygon& polygon) {
    const std::size_t last = polygon.size() - 1;
    switch (PolygonMeasure::classifyTriple(polygon[last - 2], polygon[last - 1], polygon[last])) {
    case TripleClass::FirstTwoEqual:
        polygon.pop_back();
        return true;
    case TripleClass::StandsOrShort:
    case TripleClass::GoesStraightOn:
        eraseAt(polygon, last - 1);
        return true;
    case TripleClass::AllEqual:
        polygon.pop_back();
        eraseAt(polygon, last - 2);
        return true;
    case TripleClass::TurnsBack:
        eraseAt(polygon, last - 1);
        return false;
    case TripleClass::Corner:
        break;
    }
    return true;
}

/// Whether the last vertex and the first two leave room for a polygon.
bool cleanSeam(Polygon& polygon) {
    switch (PolygonMeasure::classifyTriple(polygon.back(), polygon[0], polygon[1])) {
    case TripleClass::FirstTwoEqual:
        polygon.pop_back();
        return true;
    case TripleClass::StandsOrShort:
        eraseAt(polygon, 0);
        return true;
    case TripleClass::AllEqual:
        polygon.pop_back();
        eraseAt(polygon, 0);
        return true;
    case TripleClass::TurnsBack:
        return false;
    case TripleClass::GoesStraightOn:
        // Not the first vertex, though that is the one in the middle here.
        eraseAt(polygon, polygon.size() - 2);
        return true;
    case TripleClass::Corner:
        break;
    }
    return true;
}

/// Whether two edges meet that aren't neighbours; the closing edge is left out.
bool openChainCrosses(const Polygon& polygon) {
    for (std::size_t i = 2; i + 1 < polygon.size(); ++i)
        for (std::size_t j = 0; j + 1 < i; ++j)
            if (PolygonMeasure::segmentsIntersect(polygon[i], polygon[i + 1], polygon[j],
                                                  polygon[j + 1]))
                return true;
    return false;
}

double heronArea(const osg::Vec3d& p, const osg::Vec3d& q, const osg::Vec3d& r) {
    const double a = (q - r).length();
    const double b = (p - r).length();
    const double c = (q - p).length();
    const double s = (a + b + c) / 2.0;
    return std::sqrt(s * (s - a) * (s - b) * (s - c));
}

double componentProduct(const osg::Vec3d& normal) {
    return normal.x() * normal.y() * normal.z();
}

/// 1 for a triangle that adds, -1 for one that subtracts, 0 for one that ends the sum.
int signOfNormal(const osg::Vec3d& normal) {
    const double product = componentProduct(normal);
    if (product != 0.0)
        return product < 0.0 ? -1 : 1;
    for (int axis = 0; axis < axisCount; ++axis)
        if (std::abs(normal[axis]) > PolygonMeasure::tolerance)
            return normal[axis] > 0.0 ? 1 : -1;
    return 0;
}

osg::Vec3d normalOf(const osg::Vec3d& a, const osg::Vec3d& b, const osg::Vec3d& c) {
    return (b - a) ^ (c - a);
}

/// One edge of a triangle, and the side of it on which the third vertex lies.
class TriangleSide {
public:
    TriangleSide(const osg::Vec3d& from, const osg::Vec3d& to, const osg::Vec3d& third)
        : m_from(from), m_edge(to - from), m_normal(m_edge ^ (third - from)) {}

    bool has(const osg::Vec3d& point) const {
        return (m_edge ^ (point - m_from)) * m_normal >= 0.0;
    }

private:
    osg::Vec3d m_from;
    osg::Vec3d m_edge;
    osg::Vec3d m_normal;
};

/// A triangle that is asked about many points.
class Triangle {
public:
    Triangle(const osg::Vec3d& a, const osg::Vec3d& b, const osg::Vec3d& c)
        : m_sides{TriangleSide(c, a, b), TriangleSide(a, b, c), TriangleSide(b, c, a)} {}

    /// The side opposite of `b` comes first: for an ear's tip it keeps out almost all of the rest.
    bool has(const osg::Vec3d& point) const {
        return m_sides[0].has(point) && m_sides[1].has(point) && m_sides[2].has(point);
    }

private:
    std::array<TriangleSide, triangleVertices> m_sides;
};

bool isConvex(const Polygon& polygon, const VertexList& list, const ListCorner& corner) {
    const osg::Vec3d normal = normalOf(polygon[list[corner.previous]],
                                       polygon[list[corner.current]], polygon[list[corner.next]]);
    const bool flatOrReflex = componentProduct(normal) <= 0.0;
    return !flatOrReflex;
}

/// The place in the list, from `begin` on, of the first vertex in a corner's triangle that isn't
/// the corner's own; the list's size if there is none.
std::size_t firstInside(const Polygon& polygon, const VertexList& list, const ListCorner& corner,
                        std::size_t begin) {
    const Triangle triangle(polygon[list[corner.previous]], polygon[list[corner.current]],
                            polygon[list[corner.next]]);
    std::size_t i = begin;
    for (; i < list.size(); ++i)
        if (triangle.has(polygon[list[i]]) && i != corner.previous && i != corner.current &&
            i != corner.next)
            break;
    return i;
}

/// Clips ears off a polygon whose convex corners have normals with a positive product.
///
/// Why a vertex was no ear is remembered: it is its own obstacle if its corner isn't convex, else
/// the obstacle is the first vertex found in its triangle. As long as the obstacle is in the list
/// and the neighbours are the same, there is nothing to look at anew; and once it is gone, the
/// search goes on behind it. So no corner is compared with a vertex twice.
class EarClipping {
public:
    explicit EarClipping(const Polygon& polygon)
        : m_polygon(polygon), m_list(polygon.size()), m_obstacles(polygon.size(), unknown),
          m_inList(polygon.size(), true) {
        std::iota(m_list.begin(), m_list.end(), std::size_t{0});
    }

    /// Three vertices a triangle; none where the ears run out.
    std::optional<std::vector<osg::Vec3d>> run() {
        std::vector<osg::Vec3d> triangles;
        while (m_list.size() >= triangleVertices) {
            const std::optional<ListCorner> ear = firstEar();
            if (!ear)
                return std::nullopt;
            for (const std::size_t place : {ear->previous, ear->current, ear->next})
                triangles.push_back(m_polygon[m_list[place]]);
            clip(*ear);
        }
        return triangles;
    }

private:
    static constexpr std::size_t unknown = std::numeric_limits<std::size_t>::max();

    std::optional<ListCorner> firstEar() {
        for (std::size_t current = 1; current < m_list.size(); ++current) {
            const std::size_t next = current + 1 < m_list.size() ? current + 1 : 0;
            const ListCorner corner{current - 1, current, next};
            if (isEar(corner))
                return corner;
        }
        return std::nullopt;
    }

    bool isEar(const ListCorner& corner) {
        const std::size_t vertex = m_list[corner.current];
        std::size_t& obstacle = m_obstacles[vertex];
        if (obstacle == unknown && !isConvex(m_polygon, m_list, corner))
            obstacle = vertex;
        if (obstacle != unknown && m_inList[obstacle])
            return false;
        const std::size_t inside = firstInside(m_polygon, m_list, corner, placeAfter(obstacle));
        obstacle = inside < m_list.size() ? m_list[inside] : unknown;
        return obstacle == unknown;
    }

    std::size_t placeAfter(std::size_t clipped) const {
        if (clipped == unknown)
            return 0;
        // The list keeps the polygon's order.
        const auto after = std::lower_bound(m_list.begin(), m_list.end(), clipped);
        return static_cast<std::size_t>(after - m_list.begin());
    }

    void clip(const ListCorner& ear) {
        m_inList[m_list[ear.current]] = false;
        m_obstacles[m_list[ear.previous]] = unknown;
        m_obstacles[m_list[ear.next]] = unknown;
        eraseAt(m_list, ear.current);
    }

    const Polygon& m_polygon;
    VertexList m_list;
    VertexList m_obstacles; ///< for each vertex of the polygon
    std::vector<char> m_inList;
};

} // namespace

bool PolygonMeasure::measureArea(const MeasureArea& vertices, std::vector<osg::Vec3d>& triangles,
                                 double& area) {
    const std::optional<Polygon> polygon = projectAndClean(vertices);
    if (!polygon || closingEdgeCrosses(m_cleanPolygon))
        return false;
    measureAndFill(*polygon, triangles, area);
    return true;
}

bool PolygonMeasure::measureAreaOrDropLast(MeasureArea& vertices,
                                           std::vector<osg::Vec3d>& triangles, double& area) {
    const std::optional<Polygon> polygon = projectAndClean(vertices);
    if (!polygon) {
        vertices.pop_back();
        return false;
    }
    measureAndFill(*polygon, triangles, area);
    return true;
}

bool PolygonMeasure::signedAreaOnly(const MeasureArea& vertices, double& area) {
    const std::optional<Polygon> polygon = projectAndClean(vertices);
    if (!polygon || closingEdgeCrosses(m_cleanPolygon))
        return false;
    area = signedArea(*polygon);
    return true;
}

std::optional<Polygon> PolygonMeasure::projectAndClean(const MeasureArea& vertices) {
    osg::Vec3d coefficients;
    if (vertices.size() > triangleVertices) {
        const std::optional<osg::Vec3d> plane = fitPlane(vertices);
        if (!plane)
            return std::nullopt;
        coefficients = *plane;
    }
    Polygon polygon = projectToPlane(vertices, coefficients);
    if (!cleanPolygon(polygon))
        return std::nullopt;
    return polygon;
}

void PolygonMeasure::measureAndFill(const Polygon& polygon, std::vector<osg::Vec3d>& triangles,
                                    double& area) {
    const double sum = signedArea(polygon);
    if (sum != 0.0)
        triangulate(polygon, sum > 0.0, triangles);
    area = std::abs(sum);
}

std::optional<osg::Vec3d> PolygonMeasure::fitPlane(const Polygon& vertices) {
    // The normal equations' matrix is symmetric: its rows are its columns. Far from the origin its
    // cofactors lose in double precision what the vertices differ by.
    std::array<LongVector, axisCount> rows;
    LongVector sum;
    for (const osg::Vec3d& vertex : vertices) {
        const LongVector place = {DoubleDouble(vertex.x()), DoubleDouble(vertex.y()),
                                  DoubleDouble(vertex.z())};
        for (std::size_t i = 0; i < place.size(); ++i) {
            sum[i] += place[i];
            for (std::size_t j = 0; j < place.size(); ++j)
                rows[i][j] += place[i] * place[j];
        }
    }
    const auto& [x, y, z] = rows;
    const double determinant = dot(z, cross(x, y)).rounded();
    if (std::abs(determinant) < tolerance)
        return std::nullopt;
    const osg::Vec3d scaled(dot(sum, cross(y, z)).rounded(), dot(sum, cross(z, x)).rounded(),
                            dot(sum, cross(x, y)).rounded());
    return scaled / -determinant;
}

Polygon PolygonMeasure::projectToPlane(const Polygon& vertices, const osg::Vec3d& coefficients) {
    if (vertices.size() < triangleVertices)
        return {};
    if (vertices.size() == triangleVertices)
        return vertices;
    Polygon feet;
    feet.reserve(vertices.size());
    for (const osg::Vec3d& vertex : vertices) {
        const double way = (coefficients * vertex + 1.0) / coefficients.length2();
        feet.push_back(vertex - coefficients * way);
    }
    return feet;
}

bool PolygonMeasure::cleanPolygon(Polygon& polygon) {
    if (polygon.size() < triangleVertices)
        return true;
    if (!cleanEnd(polygon))
        return false;
    if (polygon.size() < fewestThatCross)
        return true;
    if (!cleanSeam(polygon))
        return false;
    if (polygon.size() < fewestThatCross)
        return true;
    if (openChainCrosses(polygon))
        return false;
    m_cleanPolygon = polygon;
    return true;
}

bool PolygonMeasure::closingEdgeCrosses(const Polygon& polygon) {
    if (polygon.size() < fewestThatCross)
        return false;
    for (std::size_t i = 1; i + 2 < polygon.size(); ++i)
        if (segmentsIntersect(polygon.back(), polygon.front(), polygon[i], polygon[i + 1]))
            return true;
    return false;
}

bool PolygonMeasure::segmentsIntersect(const osg::Vec3d& p1, const osg::Vec3d& p2,
                                       const osg::Vec3d& p3, const osg::Vec3d& p4) {
    struct Projection {
        int u;
        int v;
    };
    constexpr Projection projections[] = {{0, 1}, {2, 1}, {0, 2}};
    const osg::Vec3d d1 = p2 - p1;
    const osg::Vec3d d2 = p4 - p3;
    const osg::Vec3d w = p3 - p1;
    for (const auto [u, v] : projections) {
        const double determinant = d1[u] * d2[v] - d2[u] * d1[v];
        if (!(std::abs(determinant) > tolerance))
            continue;
        const double s = (d2[v] * w[u] - d2[u] * w[v]) / determinant;
        const double t = (d1[v] * w[u] - d1[u] * w[v]) / determinant;
        return s >= 0.0 && s <= 1.0 && t >= 0.0 && t <= 1.0;
    }
    return true;
}

double PolygonMeasure::signedArea(const Polygon& polygon) {
    double sum = 0.0;
    for (std::size_t i = 1; i + 1 < polygon.size(); ++i) {
        const int sign = signOfNormal(normalOf(polygon[0], polygon[i], polygon[i + 1]));
        if (sign == 0)
            break;
        sum += sign * heronArea(polygon[0], polygon[i], polygon[i + 1]);
    }
    return sum;
}

bool PolygonMeasure::triangulate(const Polygon& polygon, bool positive,
                                 std::vector<osg::Vec3d>& triangles) {
    if (polygon.size() < triangleVertices)
        return false;
    if (polygon.size() == triangleVertices) {
        triangles = polygon;
        return true;
    }
    const Polygon inOrder = positive ? polygon : Polygon(polygon.rbegin(), polygon.rend());
    std::optional<std::vector<osg::Vec3d>> clipped = EarClipping(inOrder).run();
    if (!clipped)
        return false;
    triangles = *std::move(clipped);
    return true;
}

bool PolygonMeasure::isEar(const Polygon& polygon, const std::vector<std::size_t>& list,
                           const ListCorner& corner) {
    return isConvex(polygon, list, corner) && firstInside(polygon, list, corner, 0) == list.size();
}

bool PolygonMeasure::pointInTriangle(const osg::Vec3d& point, const osg::Vec3d& a,
                                     const osg::Vec3d& b, const osg::Vec3d& c) {
    return Triangle(a, b, c).has(point);
}

TripleClass PolygonMeasure::classifyTriple(const osg::Vec3d& p, const osg::Vec3d& q,
                                           const osg::Vec3d& r) {
    const osg::Vec3d first = p - q;
    const osg::Vec3d second = q - r;
    if (isNothing(first))
        return isNothing(second) ? TripleClass::AllEqual : TripleClass::FirstTwoEqual;
    const std::optional<int> axis = firstAxisAbove(first);
    if (!axis)
        return TripleClass::Corner;
    const std::int32_t ratio = wholePart(second[*axis] / first[*axis]);
    const osg::Vec3d rest = second - first * ratio;
    for (int other = 0; other < axisCount; ++other)
        if (other != *axis && std::abs(rest[other]) >= tolerance)
            return TripleClass::Corner;
    if (ratio == 0)
        return TripleClass::StandsOrShort;
    return ratio < 0 ? TripleClass::TurnsBack : TripleClass::GoesStraightOn;
}

} // namespace orbisk
