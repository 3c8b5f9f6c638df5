#include "PointCloudScan.h"

#include "Noise.h"
#include "SceneTriangles.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Point>

#include <algorithm>
#include <cmath>
#include <string>

namespace samples {

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kStep = 0.43 * kDegree;
constexpr double kLowest = -62.0 * kDegree; ///< the tripod is in the way below
constexpr double kHighest = 66.0 * kDegree;
constexpr double kMaxRange = 78.0;
constexpr double kInstrumentHeight = 1.75;
constexpr double kRangeNoise = 0.004;
constexpr double kMixedPixelShare = 0.004;
constexpr std::uint32_t kScanSeed = 1301;

std::vector<SceneTriangle> trianglesNear(const ScannedScene& scene, const osg::Vec2d& center) {
    constexpr double kMargin = 45.0;
    std::vector<SceneTriangle> result;
    for (const MeshSet* set : scene.sets) {
        for (const Mesh& mesh : set->meshes()) {
            for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
                SceneTriangle triangle;
                triangle.surface = mesh.surface;
                for (std::size_t k = 0; k < 3; ++k) {
                    const Vertex& vertex = mesh.vertices[mesh.indices[i + k]];
                    triangle.corners[k] = vertex.position;
                    triangle.uv[k] = vertex.uv;
                }
                const osg::Vec3d& p = triangle.corners[0];
                if (std::hypot(p.x() - center.x(), p.y() - center.y()) < kMaxRange + kMargin) {
                    result.push_back(triangle);
                }
            }
        }
    }
    return result;
}

Color colorOf(const RayHit& hit, const ScannedScene& scene) {
    if (hit.surface == Surface::Ground) {
        return scene.ground->sample(hit.uv.x(), hit.uv.y());
    }
    const Color color = scene.atlas->sample(hit.uv.x(), hit.uv.y());
    if (hit.surface == Surface::Crown) {
        return color;
    }
    return scaled(color, 0.82 + 0.20 * (hit.normal * sunDirection()));
}

/// One set-up of the scanner.
class Station {
public:
    Station(const osg::Vec3d& origin, int number)
        : m_origin(origin), m_number(number),
          m_random(kScanSeed + static_cast<std::uint32_t>(number)) {}

    void scan(const SceneTriangles& tree, const ScannedScene& scene);
    osg::ref_ptr<osg::Node> node() const;

private:
    void record(const osg::Vec3d& direction, const RayHit& hit, const Color& color);

    osg::Vec3d m_origin;
    int m_number;
    HashStream m_random;
    osg::ref_ptr<osg::Vec3Array> m_positions = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec4ubArray> m_colors = new osg::Vec4ubArray;
};

void Station::record(const osg::Vec3d& direction, const RayHit& hit, const Color& color) {
    double range = hit.range + m_random.normal(kRangeNoise);
    if (hit.surface == Surface::Crown) {
        // The beam finds leaves at any depth of a crown.
        constexpr double kLeafDepth = 0.9;
        range += kLeafDepth * m_random.unit() * m_random.unit() + m_random.normal(0.08);
    } else if (m_random.unit() < kMixedPixelShare) {
        // A beam that is split by an edge yields a point somewhere behind it.
        range += 1.6 * m_random.unit();
    }
    const double exposure = 1.0 + 0.04 * (m_number - 1) + m_random.normal(0.035);
    const Color seen = scaled(color, exposure);
    const auto byte = [](double value) {
        return static_cast<GLubyte>(std::clamp(value + 0.5, 0.0, 255.0));
    };
    constexpr double kStepsPerMetre = 512.0;
    m_positions->push_back(quantized(m_origin + direction * range, kStepsPerMetre));
    m_colors->push_back(osg::Vec4ub(byte(seen.r), byte(seen.g), byte(seen.b), 255));
}

osg::ref_ptr<osg::Node> Station::node() const {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(m_positions);
    geometry->setColorArray(m_colors, osg::Array::BIND_PER_VERTEX);
    m_colors->setNormalize(true);
    geometry->addPrimitiveSet(
        new osg::DrawArrays(GL_POINTS, 0, static_cast<GLsizei>(m_positions->size())));
    geometry->setUseVertexBufferObjects(true);
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->setName("Station" + std::to_string(m_number + 1));
    geode->addDrawable(geometry);
    return geode;
}

void Station::scan(const SceneTriangles& tree, const ScannedScene& scene) {
    const int columns = static_cast<int>(std::lround(360.0 * kDegree / kStep));
    const int rows = static_cast<int>(std::lround((kHighest - kLowest) / kStep));
    for (int column = 0; column < columns; ++column) {
        const double azimuth = (column + 0.31 * m_number) * kStep;
        for (int row = 0; row <= rows; ++row) {
            const double elevation = kLowest + row * kStep;
            const osg::Vec3d direction(std::cos(azimuth) * std::cos(elevation),
                                       std::sin(azimuth) * std::cos(elevation),
                                       std::sin(elevation));
            const RayHit hit = tree.firstHit(m_origin, direction, kMaxRange);
            if (!hit.found) {
                continue;
            }
            // Grazing and distant returns get lost, and the crowd around the tripod is thinned.
            constexpr double kFullDensityRange = 9.0;
            const double incidence = std::fabs(hit.normal * direction);
            const double strength = incidence * 2400.0 / (hit.range * hit.range + 60.0);
            const double thinning = std::min(1.0, hit.range / kFullDensityRange);
            if (m_random.unit() < smoothStep(0.005, 0.08, strength) * thinning * thinning) {
                record(direction, hit, colorOf(hit, scene));
            }
        }
    }
}

} // namespace

osg::ref_ptr<osg::Node> scanSquare(const Terrain& terrain, const ScannedScene& scene) {
    const PlanBox& square = terrain.square();
    const SceneTriangles tree(trianglesNear(scene, square.center));
    const std::array<osg::Vec2d, 3> places = {osg::Vec2d(-19.0, -2.0), osg::Vec2d(20.0, -12.5),
                                              osg::Vec2d(9.0, 13.0)};
    osg::ref_ptr<osg::Group> scan = new osg::Group;
    scan->setName("Scan");
    scan->getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    constexpr float kPointSize = 2.0F;
    scan->getOrCreateStateSet()->setAttributeAndModes(new osg::Point(kPointSize));
    for (std::size_t i = 0; i < places.size(); ++i) {
        const osg::Vec2d p = square.toWorld(places[i]);
        const osg::Vec3d origin(p.x(), p.y(), terrain.height(p.x(), p.y()) + kInstrumentHeight);
        Station station(origin, static_cast<int>(i));
        station.scan(tree, scene);
        scan->addChild(station.node());
    }
    return scan;
}

std::size_t pointCount(osg::Node& scan) {
    std::size_t count = 0;
    const osg::Group* group = scan.asGroup();
    for (unsigned i = 0; i < group->getNumChildren(); ++i) {
        const osg::Geode* station = group->getChild(i)->asGeode();
        count += station->getDrawable(0)->asGeometry()->getVertexArray()->getNumElements();
    }
    return count;
}

} // namespace samples
