// Picking on a hilly terrain: the program's index against the library's intersector, with and
// without its tree, and against a ray tracing kernel that has the whole model in one tree; and what
// the index costs to build and to keep.

#include "measure/IndexedVisitor.h"
#include "measure/PickIndex.h"
#include "measure/PickRay.h"
#include "support/Report.h"
#include "support/Terrain.h"

#include <embree3/rtcore.h>
#include <osg/Geometry>
#include <osg/Group>
#include <osg/KdTree>
#include <osg/NodeVisitor>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace orbisk::bench;
using orbisk::PickRay;
using Clock = std::chrono::steady_clock;

constexpr std::size_t rayCount = 10000;  ///< half of them miss
constexpr std::size_t slowRayCount = 40; ///< where each triangle is looked at
constexpr int repetitions = 5;
constexpr int buildRepetitions = 3;
constexpr double percentile = 0.99;
constexpr double mostBytes = 40.0; ///< of the index a triangle
constexpr double nearest = 1.0;    ///< eye from the terrain, in terrain sides
constexpr double farthest = 5.0;
constexpr double around = 0.2;     ///< of the side: where misses are aimed at, beside the terrain
constexpr double tileSide = 100.0; ///< as the terrain has it

struct Model {
    const char* name;
    TerrainSize size;

    double triangles() const {
        return 2.0 * size.tilesAcross * size.tilesAcross * size.quadsAcrossTile *
               size.quadsAcrossTile;
    }
};

constexpr Model models[] = {
    {"1 M", {1, 707, false}},
    {"10 M", {1, 2236, false}},
    {"1 M in 100", {10, 71, false}},
    {"10 M in 100", {10, 224, false}},
};

double microsecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

/// Finds where a ray hits. @return whether it does.
using Pick = std::function<bool(const PickRay&)>;

struct Figures {
    double mean;
    double slow; ///< so many are faster
};

Figures timePicks(const std::vector<PickRay>& rays, const Pick& pick) {
    std::vector<double> times;
    times.reserve(rays.size());
    for (const PickRay& ray : rays) {
        const auto begin = Clock::now();
        pick(ray);
        times.push_back(microsecondsSince(begin));
    }
    const double mean =
        std::accumulate(times.begin(), times.end(), 0.0) / static_cast<double>(times.size());
    const auto slow =
        times.begin() + static_cast<std::ptrdiff_t>(percentile * static_cast<double>(times.size()));
    std::nth_element(times.begin(), slow, times.end());
    return {mean, *slow};
}

/// The library's intersector, which asks for the nearest hit only.
class LibraryPick {
public:
    LibraryPick(osg::Node& model, bool usesTree) : m_model(model) {
        m_visitor.setUseKdTreeWhenAvailable(usesTree);
    }

    bool operator()(const PickRay& ray) {
        const double length = 2 * (m_model.getBound().center() - osg::Vec3f(ray.origin)).length() +
                              m_model.getBound().radius();
        const osg::ref_ptr<osgUtil::LineSegmentIntersector> segment =
            new osgUtil::LineSegmentIntersector(osgUtil::Intersector::MODEL, ray.origin,
                                                ray.origin + ray.direction * length);
        segment->setIntersectionLimit(osgUtil::Intersector::LIMIT_NEAREST);
        m_visitor.reset();
        m_visitor.setIntersector(segment);
        m_model.accept(m_visitor);
        return segment->containsIntersections();
    }

private:
    osg::Node& m_model;
    osgUtil::IntersectionVisitor m_visitor;
};

/// Takes the library's trees away.
class TreeDropper : public osg::NodeVisitor {
public:
    TreeDropper() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geometry& geometry) override { geometry.setShape(nullptr); }
};

/// All triangles of a model in one tree of the kernel.
class KernelPick {
public:
    explicit KernelPick(osg::Node& model)
        : m_device(rtcNewDevice(nullptr)), m_scene(rtcNewScene(m_device)) {
        Adder adder(*this);
        model.accept(adder);
        rtcCommitScene(m_scene);
    }

    ~KernelPick() {
        rtcReleaseScene(m_scene);
        rtcReleaseDevice(m_device);
    }

    KernelPick(const KernelPick&) = delete;
    KernelPick& operator=(const KernelPick&) = delete;

    bool operator()(const PickRay& ray) {
        RTCRayHit hit{};
        hit.ray.org_x = static_cast<float>(ray.origin.x());
        hit.ray.org_y = static_cast<float>(ray.origin.y());
        hit.ray.org_z = static_cast<float>(ray.origin.z());
        hit.ray.dir_x = static_cast<float>(ray.direction.x());
        hit.ray.dir_y = static_cast<float>(ray.direction.y());
        hit.ray.dir_z = static_cast<float>(ray.direction.z());
        hit.ray.tfar = std::numeric_limits<float>::infinity();
        hit.ray.mask = ~0u;
        hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        rtcIntersect1(m_scene, &context, &hit);
        return hit.hit.geomID != RTC_INVALID_GEOMETRY_ID;
    }

private:
    class Adder : public osg::NodeVisitor {
    public:
        explicit Adder(KernelPick& kernel)
            : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN), m_kernel(kernel) {}

        void apply(osg::Geometry& geometry) override {
            const auto& points = dynamic_cast<const osg::Vec3Array&>(*geometry.getVertexArray());
            const auto& indices =
                dynamic_cast<const osg::DrawElementsUInt&>(*geometry.getPrimitiveSet(0));
            RTCGeometry copy = rtcNewGeometry(m_kernel.m_device, RTC_GEOMETRY_TYPE_TRIANGLE);
            auto* vertices = static_cast<float*>(
                rtcSetNewGeometryBuffer(copy, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                        sizeof(osg::Vec3), points.size()));
            for (const osg::Vec3& point : points)
                vertices = std::copy(point.ptr(), point.ptr() + 3, vertices);
            auto* corners = static_cast<unsigned int*>(
                rtcSetNewGeometryBuffer(copy, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                        3 * sizeof(unsigned int), indices.size() / 3));
            std::copy(indices.begin(), indices.end(), corners);
            rtcCommitGeometry(copy);
            rtcAttachGeometry(m_kernel.m_scene, copy);
            rtcReleaseGeometry(copy);
        }

    private:
        KernelPick& m_kernel;
    };

    RTCDevice m_device;
    RTCScene m_scene;
};

/// One model with the program's index on it.
class Subjects {
public:
    explicit Subjects(const Model& model) : m_model(makeTerrain(model.size)) {
        // Bounds are there once a model is shown.
        m_model->getBound();
        m_index.add(*m_model);
        m_index.finish();
        makeRays(model);
    }

    bool pick(const PickRay& ray) {
        orbisk::IndexedVisitor visitor(ray, m_index);
        m_model->accept(visitor);
        return !visitor.hits().empty();
    }

    osg::Group& model() { return *m_model; }
    orbisk::PickIndex& index() { return m_index; }
    const std::vector<PickRay>& rays() const { return m_rays; }

private:
    /// From around and above, onto the terrain or just beside it.
    void makeRays(const Model& model) {
        const double side = tileSide * model.size.tilesAcross;
        std::mt19937 engine(1);
        const auto between = [&engine](double low, double high) {
            return std::uniform_real_distribution<double>(low, high)(engine);
        };
        std::size_t hits = 0;
        std::size_t misses = 0;
        while (hits + misses < rayCount) {
            const osg::Vec3d target(between(-around, 1 + around) * side,
                                    between(-around, 1 + around) * side, 0);
            const double turn = between(0, 2 * std::acos(-1.0));
            const double rise = between(0.15, 1.5);
            const osg::Vec3d towards(std::cos(turn) * std::cos(rise),
                                     std::sin(turn) * std::cos(rise), std::sin(rise));
            const PickRay ray{target + towards * between(nearest, farthest) * side, -towards};
            std::size_t& count = pick(ray) ? hits : misses;
            if (count == rayCount / 2)
                continue;
            ++count;
            m_rays.push_back(ray);
        }
    }

    osg::ref_ptr<osg::Group> m_model;
    orbisk::PickIndex m_index;
    std::vector<PickRay> m_rays;
};

class Bench {
public:
    Bench(Report& report, const Model& which) : m_report(report), m_which(which) {}

    bool isWanted() const {
        for (const char* against : {"KdTree", "no tree", "Embree", "build"})
            if (m_report.wants(name(against)))
                return true;
        return false;
    }

    /// @return microseconds that the program takes for a pick on average; 0 where it was not asked.
    double run() {
        Subjects subjects(m_which);
        auto ours = [&subjects](const PickRay& ray) { return subjects.pick(ray); };
        comparePicks(subjects, ours);
        return m_mean;
    }

private:
    std::string name(const char* against) const {
        return std::string("pick ") + m_which.name + ", " + against;
    }

    void compare(const char* against, const std::vector<PickRay>& rays, const Pick& ours,
                 const std::vector<PickRay>& theirRays, const Pick& theirs, double wanted) {
        if (!m_report.wants(name(against)))
            return;
        Samples means;
        Samples slow;
        for (int i = 0; i < repetitions; ++i) {
            const Figures first = timePicks(rays, ours);
            const Figures second = timePicks(theirRays, theirs);
            means.ours.push_back(first.mean);
            means.theirs.push_back(second.mean);
            slow.ours.push_back(first.slow);
            slow.theirs.push_back(second.slow);
        }
        const Wanted bound{Wanted::Bound::AtMost, wanted};
        m_report.add(Subject{name(against), "us", Choice::Median, bound}, means);
        m_report.add(Subject{name(against) + ", slow", "us", Choice::Median, std::nullopt}, slow);
        m_mean = *std::min_element(means.ours.begin(), means.ours.end());
    }

    void comparePicks(Subjects& subjects, const Pick& ours) {
        const std::vector<PickRay> few(subjects.rays().begin(),
                                       subjects.rays().begin() + slowRayCount);
        compare("no tree", subjects.rays(), ours, few, LibraryPick(subjects.model(), false), 1e-4);
        {
            KernelPick kernel(subjects.model());
            compare("Embree", subjects.rays(), ours, subjects.rays(), std::ref(kernel), 10);
        }
        compareBuilds(subjects);
        compare("KdTree", subjects.rays(), ours, subjects.rays(),
                LibraryPick(subjects.model(), true), 0.2);
    }

    void compareBuilds(Subjects& subjects) {
        Samples samples;
        std::size_t bytes = 0;
        for (int i = 0; i < buildRepetitions; ++i) {
            const auto begin = Clock::now();
            orbisk::PickIndex index;
            index.add(subjects.model());
            index.finish();
            samples.ours.push_back(microsecondsSince(begin) / 1000);
            bytes = index.bytes();
            // A geometry that has a tree gets no other.
            TreeDropper dropper;
            subjects.model().accept(dropper);
            const auto then = Clock::now();
            const osg::ref_ptr<osg::KdTreeBuilder> builder = new osg::KdTreeBuilder;
            subjects.model().accept(*builder);
            samples.theirs.push_back(microsecondsSince(then) / 1000);
        }
        m_report.add(
            Subject{name("build"), "ms", Choice::Lowest, Wanted{Wanted::Bound::AtMost, 0.5}},
            samples);
        m_report.add(
            Limit{name("bytes a triangle"), "bytes", Wanted{Wanted::Bound::AtMost, mostBytes}},
            static_cast<double>(bytes) / m_which.triangles());
    }

    Report& m_report;
    const Model& m_which;
    double m_mean = 0.0;
};

/// What a pick takes on the model with ten times the triangles, divided by what it takes on the
/// other.
void addGrowth(Report& report, const Model& small, const Model& large, double ratio) {
    const Wanted hardlyAny{Wanted::Bound::AtMost, 2.0};
    report.add(Limit{std::string("pick ") + small.name + " to " + large.name + ", growth", "times",
                     hardlyAny},
               ratio);
}

void measure(Report& report) {
    std::array<double, std::size(models)> means{};
    for (std::size_t i = 0; i < std::size(models); ++i) {
        Bench bench(report, models[i]);
        if (bench.isWanted())
            means[i] = bench.run();
        const bool isTenTimesTheLast = i % 2 == 1;
        if (isTenTimesTheLast && means[i - 1] > 0.0 && means[i] > 0.0)
            addGrowth(report, models[i - 1], models[i], means[i] / means[i - 1]);
    }
}

} // namespace

int main(int argc, char** argv) {
    return Report::run(argc, argv, measure);
}
