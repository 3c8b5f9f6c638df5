// Any vertices as a picked area: a result or a refusal, never an end, and the refusal leaves
// everything as it was.

#include "measure/PolygonMeasure.h"
#include "support/Fuzzing.h"

#include <cmath>
#include <cstring>

namespace {

using namespace orbisk;
using fuzz::Bytes;
using fuzz::require;

constexpr std::size_t mostVertices = 24;
/// How often an object is used again; it remembers a polygon between two measurements.
constexpr int measurements = 3;
const osg::Vec3d untouched(1.0, 2.0, 3.0);
constexpr double untouchedArea = -7.0;

/// In all three coordinates odd, or on one oblique plane, where areas are what is wanted.
MeasureArea vertices(Bytes& bytes) {
    const bool onPlane = bytes.below(2) == 0;
    MeasureArea area(bytes.below(mostVertices));
    for (osg::Vec3d& vertex : area) {
        const double x = bytes.number();
        const double y = bytes.number();
        vertex.set(x, y, onPlane ? 2.0 * x + 3.0 * y + 5.0 : bytes.number());
    }
    return area;
}

void checkFilling(const std::vector<osg::Vec3d>& triangles) {
    require(triangles.size() % 3 == 0, "a triangle without three corners");
}

void checkMeasure(PolygonMeasure& measure, const MeasureArea& area) {
    std::vector<osg::Vec3d> triangles{untouched};
    double size = untouchedArea;
    if (measure.measureArea(area, triangles, size)) {
        require(!(size < 0.0), "an area below zero");
        if (triangles.size() != 1)
            checkFilling(triangles);
    } else {
        require(triangles.size() == 1 && triangles[0] == untouched && size == untouchedArea,
                "a refusal that changed something");
    }
}

void checkDropping(PolygonMeasure& measure, MeasureArea area) {
    const std::size_t before = area.size();
    std::vector<osg::Vec3d> triangles;
    double size = untouchedArea;
    const bool isMeasured = measure.measureAreaOrDropLast(area, triangles, size);
    require(area.size() == (isMeasured || before == 0 ? before : before - 1),
            "a refusal takes one vertex, a result none");
    checkFilling(triangles);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    Bytes bytes(input, size);
    PolygonMeasure measure;
    for (int i = 0; i < measurements && !bytes.isUsedUp(); ++i) {
        const MeasureArea area = vertices(bytes);
        checkMeasure(measure, area);
        checkDropping(measure, area);
        double signedSize = untouchedArea;
        if (!measure.signedAreaOnly(area, signedSize))
            require(signedSize == untouchedArea, "a refusal that changed something");
        const std::size_t kept = measure.lastCleanPolygon().size();
        require(kept == 0 || kept >= 4, "too small a polygon was kept");
    }
    return 0;
}
