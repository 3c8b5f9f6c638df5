#include "TerrainMesh.h"

#include "Delaunay.h"
#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kGridPerMetre = 16.0;
constexpr std::uint32_t kJitterSeed = 401;

/// Builds the network point by point.
class TinBuilder {
public:
    TinBuilder(const Terrain& terrain, const TinSettings& settings)
        : m_terrain(terrain), m_settings(settings),
          m_network(static_cast<std::int64_t>(kExtent * kGridPerMetre)) {
        for (const GridPoint& p : m_network.points()) {
            m_heights.push_back(heightAt(p));
        }
    }

    void addBorder();
    void addBreaklines(const PathNetwork& network, double shoulder);
    void addOutline(const PlanBox& box);
    void refine(double step);
    Mesh mesh() const;

private:
    static double metres(std::int64_t grid) { return static_cast<double>(grid) / kGridPerMetre; }
    static bool toGrid(double x, double y, GridPoint& result);
    double heightAt(const GridPoint& p) const { return m_terrain.height(metres(p.x), metres(p.y)); }
    double errorAt(const GridPoint& p, double height);
    void insert(const GridPoint& p, double height);
    void insert(double x, double y);

    const Terrain& m_terrain;
    const TinSettings& m_settings;
    Delaunay m_network;
    std::vector<double> m_heights;
};

bool TinBuilder::toGrid(double x, double y, GridPoint& result) {
    result = {std::llround(x * kGridPerMetre), std::llround(y * kGridPerMetre)};
    const auto side = static_cast<std::int64_t>(kExtent * kGridPerMetre);
    return result.x >= 0 && result.y >= 0 && result.x <= side && result.y <= side;
}

void TinBuilder::insert(const GridPoint& p, double height) {
    const auto vertex = static_cast<std::size_t>(m_network.insert(p));
    if (vertex == m_heights.size()) {
        m_heights.push_back(height);
    }
}

void TinBuilder::insert(double x, double y) {
    GridPoint p;
    if (toGrid(x, y, p)) {
        insert(p, heightAt(p));
    }
}

void TinBuilder::addBorder() {
    const double step = m_settings.coarsestStep * 0.25;
    for (double t = step; t < kExtent; t += step) {
        insert(t, 0.0);
        insert(kExtent, t);
        insert(kExtent - t, kExtent);
        insert(0.0, kExtent - t);
    }
}

void TinBuilder::addBreaklines(const PathNetwork& network, double shoulder) {
    for (const Path& path : network.paths()) {
        const double edge = path.halfWidth + 0.3;
        double sinceLast = m_settings.breaklineSpacing;
        for (std::size_t i = 0; i + 1 < path.points.size(); ++i) {
            const osg::Vec3d step = path.points[i + 1] - path.points[i];
            const double length = std::hypot(step.x(), step.y());
            sinceLast += length;
            if (sinceLast < m_settings.breaklineSpacing || length <= 0.0) {
                continue;
            }
            sinceLast = 0.0;
            const osg::Vec3d left(-step.y() / length, step.x() / length, 0.0);
            for (const double offset : {-edge - shoulder, -edge, edge, edge + shoulder}) {
                const osg::Vec3d p = path.points[i] + left * offset;
                insert(p.x(), p.y());
            }
        }
    }
}

void TinBuilder::addOutline(const PlanBox& box) {
    const double step = m_settings.breaklineSpacing;
    for (double x = -box.halfSize.x(); x <= box.halfSize.x(); x += step) {
        for (const double y : {-box.halfSize.y(), box.halfSize.y()}) {
            const osg::Vec2d p = box.toWorld(osg::Vec2d(x, y));
            insert(p.x(), p.y());
        }
    }
}

double TinBuilder::errorAt(const GridPoint& p, double height) {
    const Delaunay::Triangle& t = m_network.triangle(m_network.locate(p));
    const GridPoint& a = m_network.point(t.vertex[0]);
    const GridPoint& b = m_network.point(t.vertex[1]);
    const GridPoint& c = m_network.point(t.vertex[2]);
    const auto cross = [](const GridPoint& o, const GridPoint& u, const GridPoint& v) {
        return static_cast<double>((u.x - o.x) * (v.y - o.y) - (u.y - o.y) * (v.x - o.x));
    };
    const double area = cross(a, b, c);
    const auto z = [&](std::size_t i) { return m_heights[static_cast<std::size_t>(t.vertex[i])]; };
    const double plane =
        (cross(b, c, p) * z(0) + cross(c, a, p) * z(1) + cross(a, b, p) * z(2)) / area;
    return std::fabs(plane - height);
}

void TinBuilder::refine(double step) {
    const int count = static_cast<int>(kExtent / step);
    for (int j = 0; j < count; ++j) {
        for (int k = 0; k < count; ++k) {
            // Back and forth, so that locating a point starts next to it.
            const int i = (j % 2) == 0 ? k : count - 1 - k;
            const auto seed = kJitterSeed + static_cast<std::uint32_t>(step * 8.0);
            constexpr double kJitter = 0.8;
            const double x = (i + 0.5 + kJitter * (hashUnit(i, j, seed) - 0.5)) * step;
            const double y = (j + 0.5 + kJitter * (hashUnit(i, j, seed + 1) - 0.5)) * step;
            GridPoint p;
            if (!toGrid(x, y, p)) {
                continue;
            }
            const double height = heightAt(p);
            if (step >= m_settings.coarsestStep || errorAt(p, height) > m_settings.tolerance) {
                insert(p, height);
            }
        }
    }
}

Mesh TinBuilder::mesh() const {
    constexpr double kPositionSteps = 256.0;
    constexpr double kNormalSteps = 128.0;
    constexpr double kTextureSteps = 32768.0;
    Mesh mesh;
    mesh.surface = Surface::Ground;
    mesh.vertices.reserve(m_heights.size());
    for (std::size_t i = 0; i < m_heights.size(); ++i) {
        const GridPoint& p = m_network.points()[i];
        const double x = metres(p.x);
        const double y = metres(p.y);
        mesh.vertices.push_back(
            {quantized(osg::Vec3d(x, y, m_heights[i]), kPositionSteps),
             quantized(m_terrain.normal(x, y), kNormalSteps),
             osg::Vec2d(std::round(x / kExtent * kTextureSteps) / kTextureSteps,
                        std::round(y / kExtent * kTextureSteps) / kTextureSteps)});
    }
    for (const Delaunay::Triangle& t : m_network.triangles()) {
        if (t.alive) {
            for (const int vertex : t.vertex) {
                mesh.indices.push_back(static_cast<std::uint32_t>(vertex));
            }
        }
    }
    return mesh;
}

} // namespace

Mesh buildTin(const Terrain& terrain, const TinSettings& settings) {
    constexpr double kRoadShoulder = 5.5;
    TinBuilder builder(terrain, settings);
    builder.addBorder();
    builder.refine(settings.coarsestStep);
    builder.addBreaklines(terrain.river(), Terrain::kBankWidth);
    builder.addBreaklines(terrain.roads(), kRoadShoulder);
    builder.addOutline(terrain.square());
    for (double step = settings.coarsestStep / 2.0; step >= settings.finestStep; step /= 2.0) {
        builder.refine(step);
    }
    return builder.mesh();
}

} // namespace samples
