// Measuring and filling a picked area of ten, a hundred and a thousand vertices, and filling the
// same polygon with the library's tessellator.

#include "measure/PolygonMeasure.h"
#include "support/Report.h"

#include <osg/Geometry>
#include <osgUtil/Tessellator>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk::bench;
using Clock = std::chrono::steady_clock;
using Polygon = orbisk::PolygonMeasure::Polygon;

constexpr int repetitions = 15;
constexpr double pi = 3.14159265358979323846;
constexpr double innerRadius = 200.0;
constexpr double outerRadius = 1000.0;
/// Of the spiral, both banks together; with fewer they would cross.
constexpr double verticesPerTurn = 200.0;
constexpr double bankWidth = 80.0;

/// A picked area hardly ever has more vertices; it is measured after each click.
constexpr int wantedVertices = 100;
const Wanted oneMillisecond{Wanted::Bound::AtMost, 1000.0};

constexpr int vertexCounts[] = {10, 100, 1000};
/// Of the most vertices; fewer are measured so much more often that each repetition takes alike.
constexpr int fewestCalls = 2;

enum class Shape { Convex, Star, Spiral };

struct Case {
    const char* name;
    Shape shape;
};

const Case cases[] = {{"convex", Shape::Convex}, {"star", Shape::Star}, {"spiral", Shape::Spiral}};

/// A place on an oblique plane. What stands upright on an axis or has parallel edges would be
/// refused, or not filled.
osg::Vec3d onPlane(double radius, double angle) {
    const osg::Vec3d middle(3100.0, 4200.0, 5300.0);
    const osg::Vec3d u(0.8, 0.5, 0.3);
    const osg::Vec3d v(-0.5, 0.8, 0.2);
    return middle + u * (radius * std::cos(angle)) + v * (radius * std::sin(angle));
}

Polygon makePolygon(Shape shape, int count) {
    const double turns = count / verticesPerTurn;
    std::mt19937 bits(1);
    const auto chance = [&] { return bits() / (std::mt19937::max() + 1.0); };
    Polygon polygon;
    for (int i = 0; i < count; ++i) {
        // Uneven steps, so that no two edges are parallel.
        const double part = (i + chance() / 2.0) / count;
        if (shape == Shape::Convex) {
            polygon.push_back(onPlane(outerRadius, 2.0 * pi * part));
        } else if (shape == Shape::Star) {
            const double radius = i % 2 == 0 ? innerRadius : outerRadius;
            polygon.push_back(onPlane(radius + chance(), 2.0 * pi * part));
        } else {
            // Outwards along one bank of the spiral, and back along the other.
            const bool back = part >= 0.5;
            const double way = back ? 2.0 - 2.0 * part : 2.0 * part;
            const double bank = back ? bankWidth : 0.0;
            const double radius = innerRadius + (outerRadius - innerRadius) * way - bank;
            polygon.push_back(onPlane(radius, 2.0 * pi * turns * way));
        }
    }
    return polygon;
}

template <class Work>
double microseconds(int calls, const Work& work) {
    const auto begin = Clock::now();
    for (int i = 0; i < calls; ++i)
        work();
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count() / calls;
}

/// One measurement, as after a click: nothing is left over from the one before.
void measureAndFill(const Polygon& polygon) {
    orbisk::PolygonMeasure measure;
    std::vector<osg::Vec3d> triangles;
    double area = 0.0;
    if (!measure.measureArea(polygon, triangles, area) ||
        triangles.size() / 3 + 2 != polygon.size())
        throw std::runtime_error("the polygon is refused or not filled");
}

void tessellate(const Polygon& polygon) {
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    const osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (const osg::Vec3d& vertex : polygon)
        vertices->push_back(vertex);
    geometry->setVertexArray(vertices);
    geometry->addPrimitiveSet(
        new osg::DrawArrays(osg::PrimitiveSet::POLYGON, 0, static_cast<GLsizei>(polygon.size())));
    const osg::ref_ptr<osgUtil::Tessellator> tessellator = new osgUtil::Tessellator;
    tessellator->retessellatePolygons(*geometry);
}

double measureCount(Report& report, const std::string& name, const Polygon& polygon, int calls) {
    const Samples samples = interleave(
        repetitions, [&] { return microseconds(calls, [&] { measureAndFill(polygon); }); },
        [&] { return microseconds(calls, [&] { tessellate(polygon); }); });
    report.add(Subject{name, "us", Choice::Lowest, std::nullopt}, samples);
    return *std::min_element(samples.ours.begin(), samples.ours.end());
}

void noteGrowth(double before, double now, double factor) {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f times the vertices: %.1f times the time, power %.2f",
                  factor, now / before, std::log(now / before) / std::log(factor));
    Report::note(text);
}

void measure(Report& report) {
    constexpr int mostVertices = 1000;
    for (const Case& which : cases) {
        double timeBefore = 0.0;
        int countBefore = 0;
        for (const int count : vertexCounts) {
            const std::string name =
                std::string("area, ") + which.name + ", " + std::to_string(count) + " vertices";
            if (!report.wants(name))
                continue;
            const double time = measureCount(report, name, makePolygon(which.shape, count),
                                             fewestCalls * mostVertices / count);
            if (count == wantedVertices)
                report.add(Limit{name + ", in all", "us", oneMillisecond}, time);
            if (countBefore != 0)
                noteGrowth(timeBefore, time, static_cast<double>(count) / countBefore);
            timeBefore = time;
            countBefore = count;
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
