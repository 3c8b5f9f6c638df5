#pragma once

#include <osg/Vec3d>

#include <vector>

namespace orbisk {

using MeasurePoint = osg::Vec3d;
/// An open polyline in pick order; a closed one repeats its first vertex at the end.
using MeasureLine = std::vector<osg::Vec3d>;
/// A polygon in pick order; its closing edge is implied.
using MeasureArea = std::vector<osg::Vec3d>;
using TravelPath = std::vector<osg::Vec3d>;

/// Everything measured on the open model, in world coordinates.
struct MeasurementSet {
    std::vector<MeasurePoint> points;
    std::vector<MeasureLine> lines;
    std::vector<MeasureArea> areas;
    /// Fill of the current (last) area, three entries a triangle.
    std::vector<osg::Vec3d> areaTriangles;
    TravelPath travelPoints;

    /// Forgets all measurements.
    void clear();
};

/// The one set of the process; used on the user-interface thread only.
MeasurementSet& measurementSet();

} // namespace orbisk
