#pragma once

#include "measure/MeasurementSet.h"

#include <osg/Vec3d>

#include <cstddef>
#include <optional>
#include <vector>

namespace orbisk {

/// How the third of three consecutive vertices P, Q, R stands to the first two.
enum class TripleClass {
    FirstTwoEqual = 0,  ///< Q is P, R is elsewhere
    StandsOrShort = 1,  ///< R is Q, or on one axis with P and Q and less than their distance on
    AllEqual = 2,       ///< P, Q and R are one place
    TurnsBack = 3,      ///< R lies back towards P, a whole number of steps
    GoesStraightOn = 4, ///< R lies straight on, a whole number of steps
    Corner = 5,         ///< anything else
};

/// A corner of a vertex list: three places in the list, not in the polygon.
struct ListCorner {
    std::size_t previous;
    std::size_t current;
    std::size_t next;
};

/// Takes the area of a picked polygon and cuts it into triangles.
///
/// Picked vertices hardly ever lie in one plane: a plane is fitted through them, they are projected
/// onto it, repeated and collinear ones at the end of the list are cleaned away, and a polygon
/// whose edges cross is refused. Everything is in world coordinates, areas in squared world units;
/// the edge from the last vertex back to the first is implied.
///
/// An object keeps the polygon that it cleaned last, and `measureArea` and `signedAreaOnly` look at
/// that one for a crossing closing edge, also where the polygon at hand is too small to replace it.
/// One object serves one thread at a time. A failure is told by the result alone.
class PolygonMeasure {
public:
    using Polygon = std::vector<osg::Vec3d>;

    /// What counts as nothing, for lengths as for determinants. Absolute: it doesn't grow with the
    /// model.
    static constexpr double tolerance = 1e-6;

    /// Measures a picked area and fills it.
    ///
    /// @param vertices any number; fewer than three have the area 0.
    /// @param triangles replaced by the filling, three entries a triangle, where one is found;
    /// else,
    ///     and with an area of 0, left alone.
    /// @param area becomes the unsigned area; NaN where rounding lets Heron's root fail.
    /// @return false when no plane fits or edges cross; both outputs are then left alone.
    bool measureArea(const MeasureArea& vertices, std::vector<osg::Vec3d>& triangles, double& area);

    /// Like `measureArea`, but lets the closing edge cross others, and a failure takes the last
    /// vertex off `vertices`.
    bool measureAreaOrDropLast(MeasureArea& vertices, std::vector<osg::Vec3d>& triangles,
                               double& area);

    /// Like `measureArea`, but without triangles, and `area` becomes what `signedArea` gives.
    bool signedAreaOnly(const MeasureArea& vertices, double& area);

    /// The polygon that `cleanPolygon` finished last: projected, at least four vertices, no
    /// crossings but perhaps of the closing edge. Empty before the first.
    const Polygon& lastCleanPolygon() const { return m_cleanPolygon; }

    /// The least-squares plane a x + b y + c z + 1 = 0 through some vertices, as (a, b, c). None
    /// where the normal equations' determinant is below the tolerance: for vertices on a line or on
    /// a plane through the origin, and for models much smaller than 1.
    static std::optional<osg::Vec3d> fitPlane(const Polygon& vertices);

    /// The vertices' feet on the plane with the coefficients (a, b, c) of `fitPlane`. Three
    /// vertices are their own plane and come back as they are; of fewer nothing is left.
    static Polygon projectToPlane(const Polygon& vertices, const osg::Vec3d& coefficients);

    /// Takes a needless vertex off the end of a projected polygon and one off the seam between its
    /// end and its beginning, looks for crossing edges, the closing one left out, and keeps the
    /// result as `lastCleanPolygon` if it has at least four vertices.
    /// @param polygon edited in place, also before a failure.
    /// @return false when edges cross or turn back on themselves; nothing is kept then.
    bool cleanPolygon(Polygon& polygon);

    /// Whether the edge from the last vertex to the first meets one that it doesn't touch by being
    /// its neighbour. Never with fewer than four vertices.
    static bool closingEdgeCrosses(const Polygon& polygon);

    /// Whether the segments p1-p2 and p3-p4 meet, ends included, in the first of the projections
    /// along z, x and y in which they aren't parallel; heights along that axis don't matter.
    /// Segments that are parallel in all three always count as meeting.
    static bool segmentsIntersect(const osg::Vec3d& p1, const osg::Vec3d& p2, const osg::Vec3d& p3,
                                  const osg::Vec3d& p4);

    /// The sum over the fan of triangles from the first vertex, each with Heron's area. A triangle
    /// adds if the product of its normal's components is positive and subtracts if it is negative;
    /// if it is 0, the sign of the first component above the tolerance decides. A triangle without
    /// such a component ends the sum.
    static double signedArea(const Polygon& polygon);

    /// Cuts a polygon into triangles by clipping the first ear of the vertex list again and again.
    /// The list's first vertex is never an ear's tip. Takes time in proportion to the square of the
    /// number of vertices.
    /// @param positive whether to go through the polygon forwards; the corners whose normal has a
    ///     positive product of components then are the convex ones.
    /// @param triangles replaced by three entries a triangle.
    /// @return false for fewer than three vertices and when no ear is left; `triangles` is then
    /// left
    ///     alone. Three vertices are always one triangle, in the order given.
    static bool triangulate(const Polygon& polygon, bool positive,
                            std::vector<osg::Vec3d>& triangles);

    /// Whether a corner of a vertex list can be clipped: the product of its normal's components is
    /// positive, and no other vertex of the list lies in its triangle.
    /// @param list indices into `polygon`.
    static bool isEar(const Polygon& polygon, const std::vector<std::size_t>& list,
                      const ListCorner& corner);

    /// Whether a point of the triangle's plane lies in the triangle a, b, c or on its edges; every
    /// point does if the triangle is degenerate.
    static bool pointInTriangle(const osg::Vec3d& point, const osg::Vec3d& a, const osg::Vec3d& b,
                                const osg::Vec3d& c);

    /// Tells whether three consecutive vertices repeat each other or lie on a line. Of the ratio of
    /// the steps Q-R and P-Q only the whole part counts, so that on an oblique line only whole
    /// ratios are found. A ratio that no 32-bit integer holds, NaN included, becomes the least one.
    /// Vertices whose distance is NaN are a corner.
    static TripleClass classifyTriple(const osg::Vec3d& p, const osg::Vec3d& q,
                                      const osg::Vec3d& r);

private:
    std::optional<Polygon> projectAndClean(const MeasureArea& vertices);
    static void measureAndFill(const Polygon& polygon, std::vector<osg::Vec3d>& triangles,
                               double& area);

    Polygon m_cleanPolygon;
};

} // namespace orbisk
