#include "Village.h"

#include "Noise.h"

#include <algorithm>
#include <cmath>

namespace samples {

namespace {

constexpr std::uint32_t kVillageSeed = 701;
constexpr double kHouseGap = 5.0;
constexpr double kRoadGap = 2.2;
constexpr double kHalfTurn = 3.14159265358979323846;

constexpr std::array<osg::Vec2d::value_type, 3> kSides = {-1.0, 0.0, 1.0};

/// The outline of a box at its corners and the middles of its sides, and its centre.
std::vector<osg::Vec2d> probes(const PlanBox& plan) {
    std::vector<osg::Vec2d> points;
    for (const double sx : kSides) {
        for (const double sy : kSides) {
            points.push_back(
                plan.toWorld(osg::Vec2d(sx * plan.halfSize.x(), sy * plan.halfSize.y())));
        }
    }
    return points;
}

Strip pickFacade(double choice) {
    if (choice < 0.50) {
        return Strip::FacadeWhite;
    }
    return choice < 0.82 ? Strip::FacadeCream : Strip::FacadeOchre;
}

Strip pickRoof(double choice) {
    if (choice < 0.62) {
        return Strip::RoofRed;
    }
    return choice < 0.88 ? Strip::RoofBrown : Strip::RoofSlate;
}

} // namespace

Village::Village(const Terrain& terrain, const LandCover& cover)
    : m_terrain(terrain), m_cover(cover) {
    const PlanBox& nave = terrain.church();
    m_tower.angle = nave.angle;
    m_tower.halfSize = osg::Vec2d(3.3, 3.3);
    m_tower.center = nave.toWorld(osg::Vec2d(-nave.halfSize.x() - 2.6, 0.0));
    for (std::size_t i = 0; i < terrain.roads().paths().size(); ++i) {
        if (terrain.roads().paths()[i].hasHouses) {
            lineRoad(static_cast<int>(i));
        }
    }
}

double Village::clearance(const osg::Vec2d& point, double limit) const {
    double result = std::min({limit, m_terrain.church().distance(point), m_tower.distance(point)});
    for (const House& house : m_houses) {
        if ((point - house.plan.center).length() < limit + house.plan.halfSize.length()) {
            result = std::min(result, house.plan.distance(point));
        }
    }
    return result;
}

bool Village::fits(const PlanBox& plan) const {
    constexpr double kMaximumStep = 2.4;
    double lowest = 1e9;
    double highest = -1e9;
    for (const osg::Vec2d& p : probes(plan)) {
        if (p.x() < 5.0 || p.x() > kExtent - 5.0 || m_terrain.square().distance(p) < 3.0 ||
            clearance(p, 2.0 * kHouseGap) < kHouseGap) {
            return false;
        }
        const PathHit road = m_terrain.roads().nearest(p.x(), p.y());
        if (road.path >= 0 &&
            road.distance < m_terrain.roads().path(road.path).halfWidth + kRoadGap) {
            return false;
        }
        const PathHit river = m_terrain.river().nearest(p.x(), p.y());
        if (river.path >= 0 && river.distance < 22.0) {
            return false;
        }
        const double height = m_terrain.height(p.x(), p.y());
        lowest = std::min(lowest, height);
        highest = std::max(highest, height);
    }
    return highest - lowest < kMaximumStep;
}

void Village::settle(House& house) const {
    double lowest = 1e9;
    double highest = -1e9;
    for (const osg::Vec2d& p : probes(house.plan)) {
        const double height = m_terrain.height(p.x(), p.y());
        lowest = std::min(lowest, height);
        highest = std::max(highest, height);
    }
    house.floor = mix(lowest, highest, 0.8) + 0.15;
    house.foot = lowest - 0.8;
}

bool Village::tryHouse(const PathHit& place, int roadIndex, double side, std::uint32_t seed) {
    HashStream random(seed);
    House house;
    const double halfLength = random.between(5.2, 7.4);
    const double halfWidth = random.between(4.0, 5.1);
    const bool gableToRoad = random.unit() < 0.35;
    const double setback = m_terrain.roads().path(roadIndex).halfWidth +
                           (gableToRoad ? halfLength : halfWidth) + random.between(3.4, 7.0);
    const osg::Vec2d left(-place.direction.y(), place.direction.x());
    house.plan.center = osg::Vec2d(place.point.x(), place.point.y()) + left * (side * setback);
    house.plan.halfSize = osg::Vec2d(halfLength, halfWidth);
    house.plan.angle = std::atan2(place.direction.y(), place.direction.x()) +
                       (gableToRoad ? kHalfTurn / 2.0 : 0.0) + random.between(-0.07, 0.07);
    const double central = m_cover.village(house.plan.center.x(), house.plan.center.y());
    constexpr double kOutlyingShare = 0.16;
    if (random.unit() > std::max(kOutlyingShare * (1.0 - central), central) || !fits(house.plan)) {
        return false;
    }
    house.eaves = random.between(5.0, 6.2);
    house.pitch = random.between(0.66, 0.92);
    house.hipped = random.unit() < 0.24;
    house.timberGable = random.unit() < 0.6;
    house.facade = pickFacade(random.unit());
    house.roof = pickRoof(random.unit());
    house.access = osg::Vec2d(place.point.x(), place.point.y());
    house.hasAccess = true;
    settle(house);
    m_houses.push_back(house);
    ++m_dwellings;
    if (random.unit() < 0.3) {
        addWing(house, random.between(3.6, 5.4), random.between(-0.35, 0.35));
    }
    return true;
}

void Village::addWing(const House& main, double depth, double shift) {
    House wing = main;
    wing.plan.angle += kHalfTurn / 2.0;
    const double reach = main.plan.halfSize.y() + depth;
    wing.plan.halfSize = osg::Vec2d(reach / 2.0, main.plan.halfSize.y() * 0.72);
    wing.plan.center = main.plan.toWorld(osg::Vec2d(shift * main.plan.halfSize.x(), reach / 2.0));
    wing.eaves -= 0.45;
    wing.hipped = false;
    wing.chimney = false;
    wing.hasAccess = false;

    for (const osg::Vec2d& p : probes(wing.plan)) {
        const PathHit road = m_terrain.roads().nearest(p.x(), p.y());
        const bool onRoad = road.path >= 0 &&
                            road.distance < m_terrain.roads().path(road.path).halfWidth + kRoadGap;
        if (onRoad || m_terrain.square().distance(p) < 2.0) {
            return;
        }
        for (std::size_t i = 0; i + 1 < m_houses.size(); ++i) {
            if (m_houses[i].plan.distance(p) < 3.0) {
                return;
            }
        }
        wing.foot = std::min(wing.foot, m_terrain.height(p.x(), p.y()) - 0.8);
    }
    m_houses.push_back(wing);
}

void Village::lineRoad(int roadIndex) {
    const Path& road = m_terrain.roads().path(roadIndex);
    for (int sideIndex = 0; sideIndex < 2; ++sideIndex) {
        const double side = sideIndex == 0 ? 1.0 : -1.0;
        double wait = 6.0;
        for (std::size_t i = 0; i + 1 < road.points.size(); ++i) {
            const osg::Vec3d step = road.points[i + 1] - road.points[i];
            const double length = std::hypot(step.x(), step.y());
            wait -= length;
            if (wait > 0.0 || length <= 0.0) {
                continue;
            }
            PathHit place;
            place.point = road.points[i];
            place.direction = osg::Vec2d(step.x(), step.y()) / length;
            const std::uint32_t seed =
                hashCell(roadIndex * 2 + sideIndex, static_cast<int>(i), kVillageSeed);
            wait = tryHouse(place, roadIndex, side, seed)
                       ? 14.0 + 7.0 * hashUnit(static_cast<int>(i), roadIndex, kVillageSeed + 1)
                       : length;
        }
    }
}

} // namespace samples
