#include "Buildings.h"

#include "Block.h"
#include "Noise.h"

#include <array>
#include <cmath>

namespace samples {

namespace {

constexpr double kTau = 6.28318530717958648;
/// Decorations stand this far in front of their wall, enough to never flicker.
constexpr double kRelief = 0.12;
/// A place inside a window pane of the white facade.
const osg::Vec2d kGlass(50.0 / kAtlasWidth + 8.0 / kAtlasWidth, 96.0 / kAtlasHeight);

/// A panel on a wall: its centre, half size, and the outward and sideways directions.
void addPanel(MeshSet& set, const osg::Vec3d& center, const osg::Vec3d& outward, double halfWidth,
              double halfHeight, const osg::Vec2d& uv) {
    const osg::Vec3d up(0.0, 0.0, halfHeight);
    const osg::Vec3d side = (osg::Vec3d(0.0, 0.0, 1.0) ^ outward) * halfWidth;
    const osg::Vec3d c = center + outward * kRelief;
    addWall(set,
            {{c - side - up, uv}, {c + side - up, uv}, {c + side + up, uv}, {c - side + up, uv}});
}

void addDisc(MeshSet& set, const osg::Vec3d& center, const osg::Vec3d& outward, double radius,
             const osg::Vec2d& uv) {
    constexpr int kCorners = 16;
    const osg::Vec3d side = osg::Vec3d(0.0, 0.0, 1.0) ^ outward;
    std::vector<Corner> corners;
    for (int i = 0; i < kCorners; ++i) {
        const double a = kTau * i / kCorners;
        corners.emplace_back(center + side * (radius * std::cos(a)) +
                                 osg::Vec3d(0.0, 0.0, radius * std::sin(a)),
                             uv);
    }
    addWall(set, corners);
}

/// Tall windows along both sides of the nave.
void addNaveWindows(MeshSet& set, const PlanBox& nave, double floor) {
    constexpr int kWindows = 5;
    for (const double sign : {-1.0, 1.0}) {
        const osg::Vec2d foot = nave.toWorld(osg::Vec2d(0.0, sign)) - nave.center;
        const osg::Vec3d outward(foot.x(), foot.y(), 0.0);
        for (int i = 0; i < kWindows; ++i) {
            const double x = -nave.halfSize.x() + (i + 0.75) * 2.0 * nave.halfSize.x() / 5.5;
            const osg::Vec2d p = nave.toWorld(osg::Vec2d(x, sign * nave.halfSize.y()));
            addPanel(set, osg::Vec3d(p.x(), p.y(), floor + 4.3), outward, 0.75, 2.0, kGlass);
            addDisc(set, osg::Vec3d(p.x(), p.y(), floor + 6.3) + outward * (kRelief + 0.01),
                    outward, 0.75, kGlass);
        }
    }
}

void addApse(MeshSet& set, const PlanBox& nave, double floor, double foot) {
    constexpr int kSides = 5;
    constexpr double kEaves = 6.6;
    constexpr double kRoofRise = 4.0;
    const double radius = nave.halfSize.y() * 0.78;
    const auto corner = [&](int i, double r, double z) {
        const double a = kTau * 0.5 * (static_cast<double>(i) / kSides - 0.5);
        const osg::Vec2d p =
            nave.toWorld(osg::Vec2d(nave.halfSize.x() - 0.2 + r * std::cos(a), r * std::sin(a)));
        return osg::Vec3d(p.x(), p.y(), z);
    };
    const osg::Vec2d tip = nave.toWorld(osg::Vec2d(nave.halfSize.x() - 0.1, 0.0));
    const osg::Vec3d apex(tip.x(), tip.y(), floor + kEaves + kRoofRise);
    for (int i = 0; i < kSides; ++i) {
        addWall(set, {{corner(i, radius, foot), atlasPoint(Strip::Trim, 0.0, 0.1)},
                      {corner(i + 1, radius, foot), atlasPoint(Strip::Trim, 0.3, 0.1)},
                      {corner(i + 1, radius, floor + kEaves), atlasPoint(Strip::Trim, 0.3, 0.9)},
                      {corner(i, radius, floor + kEaves), atlasPoint(Strip::Trim, 0.0, 0.9)}});
        const double eaves = floor + kEaves - 0.1;
        addPolygon(set.mesh(Surface::Roof),
                   {{corner(i, radius + 0.4, eaves), atlasPoint(Strip::RoofSlate, 0.0, 0.0)},
                    {corner(i + 1, radius + 0.4, eaves), atlasPoint(Strip::RoofSlate, 0.25, 0.0)},
                    {apex, atlasPoint(Strip::RoofSlate, 0.12, 0.8)}});
    }
}

void addTower(MeshSet& set, const PlanBox& tower, double floor, double foot) {
    const double half = tower.halfSize.x();
    const double top = floor + Village::kTowerHeight;
    Block block(set, tower);
    block.boxWalls(-half - 0.15, -half - 0.15, half + 0.15, half + 0.15, foot, floor + 1.4,
                   Strip::Stone, kStoneRepeat);
    block.boxTop(-half - 0.15, -half - 0.15, half + 0.15, half + 0.15, floor + 1.4, Strip::Stone);
    block.boxWalls(-half, -half, half, half, floor + 1.4, top, Strip::Trim, kStoneRepeat);
    block.pyramidRoof(top, Village::kSpireHeight, 0.55, Strip::RoofSlate);
    constexpr double kCrossHalf = 0.12;
    const double tip = top + Village::kSpireHeight - 0.4;
    block.boxWalls(-kCrossHalf, -kCrossHalf, kCrossHalf, kCrossHalf, tip, tip + 2.2, Strip::Timber,
                   kStoneRepeat);
    block.boxWalls(-kCrossHalf, -0.6, kCrossHalf, 0.6, tip + 1.2, tip + 1.45, Strip::Timber,
                   kStoneRepeat);

    for (int i = 0; i < 4; ++i) {
        const double a = tower.angle + kTau * i / 4.0;
        const osg::Vec3d outward(std::cos(a), std::sin(a), 0.0);
        const osg::Vec3d wall =
            osg::Vec3d(tower.center.x(), tower.center.y(), 0.0) + outward * half;
        addPanel(set, wall + osg::Vec3d(0.0, 0.0, top - 7.4), outward, 0.9, 1.6, kGlass);
        const osg::Vec3d clock = wall + osg::Vec3d(0.0, 0.0, top - 2.9);
        addDisc(set, clock + outward * kRelief, outward, 1.6, kGlass);
        addDisc(set, clock + outward * (2.0 * kRelief), outward, 1.35,
                atlasPoint(Strip::Trim, 0.2, 0.5));
        addPanel(set, clock + outward * (2.0 * kRelief) + osg::Vec3d(0.0, 0.0, 0.45), outward, 0.09,
                 0.5, kGlass);
    }
    const double a = tower.angle + kTau / 2.0;
    const osg::Vec3d outward(std::cos(a), std::sin(a), 0.0);
    addPanel(set,
             osg::Vec3d(tower.center.x(), tower.center.y(), floor + 1.6) + outward * (half + 0.15),
             outward, 0.9, 1.6, atlasPoint(Strip::Timber, 0.3, 0.5));
}

void addChimney(Block& block, const House& house) {
    constexpr double kHalf = 0.38;
    const double x = house.plan.halfSize.x() * 0.42;
    const double y = house.plan.halfSize.y() * 0.24;
    const double ridge = house.ridgeHeight();
    block.boxWalls(x - kHalf, y - kHalf, x + kHalf, y + kHalf, ridge - 2.6, ridge + 0.75,
                   Strip::Stone, kStoneRepeat);
    block.boxTop(x - kHalf, y - kHalf, x + kHalf, y + kHalf, ridge + 0.75, Strip::Timber);
}

/// The side view of the bridge: distance from its middle and height of its underside.
std::vector<osg::Vec2d> bridgeUnderside(double water, double deck) {
    constexpr int kSteps = 12;
    constexpr double kPierHalf = 1.1;
    constexpr double kAbutment = 2.2;
    const double end = Terrain::kBridgeHalfLength;
    const double foot = water - 1.2;
    const double spring = water + 0.9;
    const double crown = deck - 0.85;
    const double inner = kPierHalf;
    const double outer = end - kAbutment;
    std::vector<osg::Vec2d> half;
    for (int i = 0; i <= kSteps; ++i) {
        const double a = kTau / 2.0 * i / kSteps;
        const double x = (inner + outer) / 2.0 - (outer - inner) / 2.0 * std::cos(a);
        half.emplace_back(x, spring + (crown - spring) * std::sin(a));
    }
    std::vector<osg::Vec2d> line;
    line.emplace_back(-end, foot);
    line.emplace_back(-outer, foot);
    for (auto p = half.rbegin(); p != half.rend(); ++p) {
        line.emplace_back(-p->x(), p->y());
    }
    line.emplace_back(-inner, foot);
    line.emplace_back(inner, foot);
    line.insert(line.end(), half.begin(), half.end());
    line.emplace_back(outer, foot);
    line.emplace_back(end, foot);
    return line;
}

} // namespace

void addHouse(MeshSet& set, const House& house) {
    Block block(set, house.plan);
    const double hx = house.plan.halfSize.x();
    const double hy = house.plan.halfSize.y();
    const double top = house.floor + house.eaves;
    constexpr double kPlinth = 0.06;
    constexpr double kEavesOverhang = 0.75;
    constexpr double kGableOverhang = 0.65;
    block.boxWalls(-hx - kPlinth, -hy - kPlinth, hx + kPlinth, hy + kPlinth, house.foot,
                   house.floor + 0.25, Strip::Stone, kStoneRepeat);
    block.facadeWalls(house.floor, top, house.facade);
    if (house.hipped) {
        block.hipRoof(top, house.pitch, kEavesOverhang, house.roof);
    } else {
        if (house.timberGable) {
            block.gables(top, hy * house.pitch, Strip::Timber, 0.05, 0.95);
        } else {
            // The plain plaster above the upper windows.
            block.gables(top, hy * house.pitch, house.facade, 0.97, 0.99);
        }
        block.gableRoof(top, house.pitch, kEavesOverhang, kGableOverhang, house.roof);
    }
    if (house.chimney) {
        addChimney(block, house);
    }
}

void addChurch(MeshSet& set, const Terrain& terrain, const Village& village) {
    const PlanBox& nave = terrain.church();
    const double floor = terrain.squareHeight() + 0.2;
    const double foot = floor - 1.2;
    const double hx = nave.halfSize.x();
    const double hy = nave.halfSize.y();
    const double top = floor + Village::kNaveEaves;
    Block block(set, nave);
    block.boxWalls(-hx - 0.1, -hy - 0.1, hx + 0.1, hy + 0.1, foot, floor + 0.9, Strip::Stone,
                   kStoneRepeat);
    block.boxWalls(-hx, -hy, hx, hy, floor, top, Strip::Trim, kStoneRepeat);
    block.gables(top, hy * Village::kNavePitch, Strip::Trim, 0.1, 0.9);
    block.gableRoof(top, Village::kNavePitch, 0.6, 0.4, Strip::RoofSlate);
    addNaveWindows(set, nave, floor);
    addApse(set, nave, floor, foot);
    addTower(set, village.tower(), floor, foot);
}

void addBridge(MeshSet& set, const Terrain& terrain) {
    constexpr double kHalfWidth = 3.7;
    constexpr double kParapetWidth = 0.45;
    constexpr double kParapetHeight = 0.95;
    const osg::Vec2d direction = terrain.bridgeDirection();
    PlanBox plan;
    plan.center = terrain.bridgeCenter();
    plan.halfSize = osg::Vec2d(Terrain::kBridgeHalfLength, kHalfWidth);
    plan.angle = std::atan2(direction.y(), direction.x());
    Block block(set, plan);

    const double water = terrain.waterLevel(plan.center.x());
    const double deck = terrain.bridgeDeckHeight() + 0.06;
    const std::vector<osg::Vec2d> line = bridgeUnderside(water, deck);
    const auto uv = [&](const osg::Vec3d& p, double x) {
        return atlasPoint(Strip::Stone, x / kStoneRepeat, (p.z() - water + 1.2) / 8.0);
    };
    for (std::size_t i = 0; i + 1 < line.size(); ++i) {
        const double x0 = line[i].x();
        const double x1 = line[i + 1].x();
        const double z0 = line[i].y();
        const double z1 = line[i + 1].y();
        for (const double side : {-1.0, 1.0}) {
            const double a = side < 0.0 ? x0 : x1;
            const double b = side < 0.0 ? x1 : x0;
            const osg::Vec3d lowA = block.at(a, side * kHalfWidth, side < 0.0 ? z0 : z1);
            const osg::Vec3d lowB = block.at(b, side * kHalfWidth, side < 0.0 ? z1 : z0);
            const osg::Vec3d highA = block.at(a, side * kHalfWidth, deck);
            const osg::Vec3d highB = block.at(b, side * kHalfWidth, deck);
            if (x1 > x0) {
                addWall(set, {{lowA, uv(lowA, a)},
                              {lowB, uv(lowB, b)},
                              {highB, uv(highB, b)},
                              {highA, uv(highA, a)}});
            }
        }
        const osg::Vec2d shade = atlasPoint(Strip::Stone, 0.1, 0.4);
        addPolygon(set.mesh(Surface::WallShade), {{block.at(x0, kHalfWidth, z0), shade},
                                                  {block.at(x1, kHalfWidth, z1), shade},
                                                  {block.at(x1, -kHalfWidth, z1), shade},
                                                  {block.at(x0, -kHalfWidth, z0), shade}});
    }
    const double end = Terrain::kBridgeHalfLength;
    const double inner = kHalfWidth - kParapetWidth;
    block.boxTop(-end, -inner, end, inner, deck, Strip::Asphalt);
    for (const double y : {-kHalfWidth, inner}) {
        block.boxWalls(-end, y, end, y + kParapetWidth, deck, deck + kParapetHeight, Strip::Stone,
                       kStoneRepeat);
        block.boxTop(-end, y, end, y + kParapetWidth, deck + kParapetHeight, Strip::Stone);
    }
}

} // namespace samples
