#include "Terrain.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr double kBridgeX = 482.0;
constexpr double kBridgeDeckAboveWater = 5.4;
constexpr double kRiverHalfWidth = 8.5;
constexpr double kRoadBlend = 6.0;
constexpr double kSquareBlend = 12.0;

enum Seed : std::uint32_t {
    SeedWarp = 11,
    SeedFloorWidth = 23,
    SeedSpur = 37,
    SeedDetail = 41,
    SeedMicro = 53,
    SeedCliff = 67,
    SeedCliffGap = 71
};

double bump(double x, double y, double centerX, double centerY, double radius) {
    const double dx = (x - centerX) / radius;
    const double dy = (y - centerY) / radius;
    return std::exp(-(dx * dx + dy * dy));
}

/// max(0, value) with a rounded foot, so that slopes leave the valley floor gently.
double softRamp(double value) {
    constexpr double kRounding = 34.0;
    return 0.5 * (value + std::sqrt(value * value + kRounding * kRounding));
}

} // namespace

osg::Vec3d sunDirection() {
    osg::Vec3d sun(-0.55, 0.55, 0.72);
    sun.normalize();
    return sun;
}

osg::Vec2d PlanBox::toLocal(const osg::Vec2d& point) const {
    const osg::Vec2d d = point - center;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {d.x() * c + d.y() * s, d.y() * c - d.x() * s};
}

osg::Vec2d PlanBox::toWorld(const osg::Vec2d& local) const {
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {center.x() + local.x() * c - local.y() * s, center.y() + local.x() * s + local.y() * c};
}

double PlanBox::distance(const osg::Vec2d& point) const {
    const osg::Vec2d local = toLocal(point);
    const double dx = std::fabs(local.x()) - halfSize.x();
    const double dy = std::fabs(local.y()) - halfSize.y();
    if (dx <= 0.0 && dy <= 0.0) {
        return std::max(dx, dy);
    }
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0));
}

Terrain::Terrain() : m_roads(kExtent), m_river(kExtent) {
    addRiver();
    m_square.angle = axisAngle(460.0);
    m_square.center = fromAxis(461.0, 75.5);
    m_square.halfSize = osg::Vec2d(34.0, 15.0);
    m_church.angle = m_square.angle;
    m_church.center = m_square.toWorld(osg::Vec2d(17.0, 0.5));
    m_church.halfSize = osg::Vec2d(12.0, 5.2);
    m_squareHeight = baseHeight(m_square.center.x(), m_square.center.y());
    addRoads();
}

double Terrain::waterLevel(double x) const {
    return 428.0 - 0.010 * x;
}

double Terrain::axisAngle(double x) const {
    const double slope = -0.12 + 40.0 / 210.0 * std::cos(x / 210.0 + 0.4);
    return std::atan(slope);
}

double Terrain::axisOffset(double x, double y) const {
    return y - (520.0 - 0.12 * (x - 500.0) + 40.0 * std::sin(x / 210.0 + 0.4));
}

osg::Vec2d Terrain::fromAxis(double x, double offset) const {
    return {x, offset - axisOffset(x, 0.0)};
}

double Terrain::riverOffset(double x) const {
    return -38.0 + 30.0 * std::sin(x / 78.0 + 0.5) + 8.0 * std::sin(x / 31.0);
}

double Terrain::floorDistance(double x, double offset, double y) const {
    const bool north = offset > 0.0;
    const double reach = std::fabs(offset);
    const double floorHalfWidth =
        (north ? 130.0 : 112.0) +
        26.0 * gradientNoise(x / 160.0, north ? 0.5 : 9.5, SeedFloorWidth);
    const double warp = 60.0 * fractalNoise(x / 190.0, y / 190.0, 3, SeedWarp);
    return reach + warp * smoothStep(60.0, 170.0, reach) - floorHalfWidth;
}

double Terrain::rise(double x, double y) const {
    const double offset = axisOffset(x, y);
    const double t = softRamp(floorDistance(x, offset, y));
    const bool north = offset > 0.0;
    double up = north ? 225.0 * (1.0 - std::exp(-t / 215.0)) : 150.0 * (1.0 - std::exp(-t / 180.0));

    const double spur = ridgedNoise(x / 150.0, y / 330.0, 3, SeedSpur) - 0.5;
    up += (north ? 62.0 : 48.0) * spur * smoothStep(15.0, 190.0, t);
    up += 9.0 * fractalNoise(x / 55.0, y / 55.0, 4, SeedDetail) * smoothStep(8.0, 110.0, t);
    up += 75.0 * bump(x, y, 235.0, 960.0, 165.0) + 45.0 * bump(x, y, 790.0, 990.0, 150.0) +
          40.0 * bump(x, y, 640.0, 20.0, 150.0) + 30.0 * bump(x, y, 60.0, 40.0, 170.0);
    if (north) {
        // One resistant layer crops out as a cliff along the sunny side, with gaps.
        const double line = t - 190.0 - 46.0 * gradientNoise(x / 120.0, 3.5, SeedCliff) -
                            14.0 * gradientNoise(x / 27.0, y / 60.0, SeedCliff);
        const double share = smoothStep(-0.25, 0.25, gradientNoise(x / 170.0, 0.4, SeedCliffGap));
        up += 30.0 * smoothStep(-9.0, 9.0, line) * share;
    }
    return up;
}

double Terrain::baseHeight(double x, double y) const {
    const double micro = 0.45 * fractalNoise(x / 24.0, y / 24.0, 3, SeedMicro);
    const double offset = axisOffset(x, y);
    return waterLevel(x) + 2.9 + 0.008 * std::fabs(offset) + micro + rise(x, y);
}

double Terrain::withRoads(double x, double y, double ground) const {
    const PathHits hits = m_roads.near(x, y);
    double untouched = 1.0;
    double weightSum = 0.0;
    double heightSum = 0.0;
    for (std::size_t i = 0; i < hits.count; ++i) {
        const PathHit& hit = hits.items[i];
        const double edge = m_roads.path(hit.path).halfWidth + 0.6;
        const double weight = 1.0 - smoothStep(edge, edge + kRoadBlend, hit.distance);
        untouched *= 1.0 - weight;
        weightSum += weight * weight;
        heightSum += weight * weight * hit.point.z();
    }
    return weightSum > 0.0 ? mix(heightSum / weightSum, ground, untouched) : ground;
}

double Terrain::withRiver(double x, double y, double ground) const {
    const PathHit hit = m_river.nearest(x, y);
    if (hit.path < 0) {
        return ground;
    }
    const double edge = m_river.path(hit.path).halfWidth;
    const double t = smoothStep(edge, edge + kBankWidth, hit.distance);
    return mix(waterLevel(hit.point.x()), ground, t);
}

double Terrain::height(double x, double y) const {
    double ground = withRoads(x, y, baseHeight(x, y));
    const double level = smoothStep(0.0, kSquareBlend, m_square.distance(osg::Vec2d(x, y)));
    ground = mix(m_squareHeight, ground, level);
    return withRiver(x, y, ground);
}

osg::Vec3d Terrain::normal(double x, double y) const {
    constexpr double kStep = 0.75;
    const double dx = height(x + kStep, y) - height(x - kStep, y);
    const double dy = height(x, y + kStep) - height(x, y - kStep);
    osg::Vec3d n(-dx, -dy, 2.0 * kStep);
    n.normalize();
    return n;
}

double Terrain::bridgeDeckHeight() const {
    return waterLevel(m_bridgeCenter.x()) + kBridgeDeckAboveWater;
}

void Terrain::addRiver() {
    Path river;
    river.kind = PathKind::River;
    river.halfWidth = kRiverHalfWidth;
    for (double x = -40.0; x <= kExtent + 40.0; x += 4.0) {
        const osg::Vec2d p = fromAxis(x, riverOffset(x));
        river.points.emplace_back(p.x(), p.y(), waterLevel(x));
    }
    m_river.add(river);

    m_bridgeCenter = fromAxis(kBridgeX, riverOffset(kBridgeX));
    const osg::Vec2d ahead = fromAxis(kBridgeX + 4.0, riverOffset(kBridgeX + 4.0));
    const osg::Vec2d flow = ahead - m_bridgeCenter;
    // Across the river, pointing north.
    m_bridgeDirection = osg::Vec2d(-flow.y(), flow.x()) / flow.length();
}

void Terrain::addRoad(PathKind kind, double halfWidth, bool hasHouses,
                      const std::vector<osg::Vec2d>& controls) {
    Path road;
    road.kind = kind;
    road.halfWidth = halfWidth;
    road.hasHouses = hasHouses;
    road.points = smoothCurve(controls, 4.0);

    std::vector<double> ground;
    for (const osg::Vec3d& p : road.points) {
        ground.push_back(baseHeight(p.x(), p.y()));
    }
    constexpr int kSmoothing = 6;
    const int count = static_cast<int>(ground.size());
    for (int i = 0; i < count; ++i) {
        // The window shrinks towards the ends, so that a road ends where its neighbours start.
        const int reach = std::min({kSmoothing, i, count - 1 - i});
        double sum = 0.0;
        for (int k = i - reach; k <= i + reach; ++k) {
            sum += ground[static_cast<std::size_t>(k)];
        }
        osg::Vec3d& p = road.points[static_cast<std::size_t>(i)];
        const double smooth = sum / (2 * reach + 1);
        const osg::Vec2d fromBridge = osg::Vec2d(p.x(), p.y()) - m_bridgeCenter;
        const double ramp = smoothStep(kBridgeHalfLength + 3.0, 58.0, fromBridge.length());
        const bool crossing = std::fabs(fromBridge.x() * m_bridgeDirection.y() -
                                        fromBridge.y() * m_bridgeDirection.x()) < 9.0;
        p.z() = crossing ? mix(bridgeDeckHeight(), smooth, ramp) : smooth;
    }
    m_roads.add(road);
}

void Terrain::addRoads() {
    const auto at = [this](double x, double offset) { return fromAxis(x, offset); };
    const auto bridge = [this](double along) { return m_bridgeCenter + m_bridgeDirection * along; };

    addRoad(PathKind::MainRoad, 3.4, true,
            {at(-10, 72), at(120, 60), at(250, 67), at(350, 60), at(455, 52), at(560, 54),
             at(680, 67), at(820, 58), at(1010, 66)});
    addRoad(PathKind::Street, 2.5, true,
            {at(322, 62), at(345, 84), at(400, 101), at(460, 103), at(535, 99), at(590, 86),
             at(622, 60)});
    addRoad(PathKind::Street, 2.5, true,
            {at(487, 52), bridge(46), bridge(20), bridge(0), bridge(-20), bridge(-38), at(478, -86),
             at(484, -97)});
    addRoad(PathKind::Street, 2.5, false, {at(415, 55), at(416, 78), at(410, 102)});
    addRoad(
        PathKind::Street, 2.3, true,
        {at(487, 28), at(450, 22), at(400, 2), at(345, -14), at(300, 4), at(283, 34), at(290, 65)});
    addRoad(PathKind::Street, 2.3, true, {at(487, 28), at(530, 26), at(585, 30), at(620, 57)});
    addRoad(PathKind::Street, 2.3, true,
            {at(484, -97), at(540, -98), at(620, -92), at(740, -96), at(860, -100), at(1010, -92)});
    addRoad(PathKind::Track, 1.7, false,
            {at(484, -97), at(420, -104), at(300, -100), at(160, -96), at(60, -104), at(-10, -98)});
    addRoad(PathKind::Track, 1.7, false,
            {at(740, -96), at(775, -132), at(820, -176), at(880, -205), at(905, -235),
             at(880, -262), at(800, -262), at(730, -270), at(712, -300), at(745, -325),
             at(820, -335), at(900, -372), at(940, -430), at(960, -520)});
    addRoad(PathKind::Track, 1.7, false,
            {at(400, 101), at(372, 140), at(320, 178), at(255, 195), at(175, 190), at(120, 205),
             at(112, 235), at(150, 255), at(215, 262), at(262, 285)});
    addRoad(PathKind::Track, 1.6, false,
            {at(680, 67), at(695, 110), at(740, 150), at(800, 165), at(880, 160), at(1010, 178)});
}

} // namespace samples
