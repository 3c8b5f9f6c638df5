// Building a roam's path of a thousand to a million travel points, and how the time grows with
// them; against handing the points to the library's path one by one.

#include "roam/RoamPath.h"
#include "support/Report.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using namespace orbisk;
using namespace orbisk::bench;
using Clock = std::chrono::steady_clock;

constexpr int repetitions = 11;
constexpr std::size_t pointCounts[] = {1000, 10'000, 100'000, 1'000'000};
constexpr std::size_t mostPoints = 1'000'000;
/// Over all of them. Comparing each with each would be 2; beyond the processor's caches a point
/// costs more, however little is done with it.
const Wanted linear{Wanted::Bound::AtMost, 1.25};

/// A walk over hills, as a survey has its coordinates.
TravelPath makePoints(std::size_t count) {
    TravelPath points;
    points.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto step = static_cast<double>(i);
        points.emplace_back(512000.0 + step * 0.7, 5412000.0 + std::sin(step * 0.01) * 50.0,
                            300.0 + std::cos(step * 0.03) * 20.0);
    }
    return points;
}

RoamParameters makeParameters() {
    RoamParameters parameters;
    parameters.resetForModel(500.0);
    parameters.roll = 10.0;
    parameters.pitch = -20.0;
    parameters.yaw = 30.0;
    return parameters;
}

void build(const TravelPath& points, const RoamParameters& parameters) {
    if (buildRoamPath(points, parameters)->getTimeControlPointMap().size() + 1 != points.size())
        throw std::runtime_error("the path lacks points");
}

void insertEach(const TravelPath& points, const RoamParameters& parameters) {
    const osg::ref_ptr<osg::AnimationPath> path = new osg::AnimationPath;
    double time = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) {
        path->insert(time, osg::AnimationPath::ControlPoint(points[i]));
        time += (points[i] - points[i - 1]).length() * parameters.secondsPerMetre;
    }
}

/// Nanoseconds a point, the path's end included; few points are built so much more often.
template <class Work>
double nanosecondsPerPoint(std::size_t count, const Work& work) {
    const std::size_t calls = mostPoints / count;
    const auto begin = Clock::now();
    for (std::size_t i = 0; i < calls; ++i)
        work();
    const std::chrono::duration<double, std::nano> time = Clock::now() - begin;
    return time.count() / static_cast<double>(calls * count);
}

double measureCount(Report& report, const std::string& name, std::size_t count) {
    const TravelPath points = makePoints(count);
    const RoamParameters parameters = makeParameters();
    const Samples samples = interleave(
        repetitions, [&] { return nanosecondsPerPoint(count, [&] { build(points, parameters); }); },
        [&] { return nanosecondsPerPoint(count, [&] { insertEach(points, parameters); }); });
    report.add(Subject{name, "ns/point", Choice::Lowest, std::nullopt}, samples);
    return *std::min_element(samples.ours.begin(), samples.ours.end());
}

/// The power of the number of points with which the whole time grows.
double growthPower(double fewTime, double mostTime) {
    const double factor = static_cast<double>(mostPoints) / static_cast<double>(pointCounts[0]);
    return 1.0 + std::log(mostTime / fewTime) / std::log(factor);
}

void measure(Report& report) {
    std::map<std::size_t, double> times;
    for (const std::size_t count : pointCounts) {
        const std::string name = "roam path, " + std::to_string(count) + " points";
        if (!report.wants(name))
            continue;
        times[count] = measureCount(report, name, count);
    }
    if (times.count(pointCounts[0]) != 0 && times.count(mostPoints) != 0)
        report.add(Limit{"roam path, growth", "power", linear},
                   growthPower(times[pointCounts[0]], times[mostPoints]));
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
