// Where the houses of the sample village stand, and what they are like.
#pragma once

#include "Atlas.h"
#include "LandCover.h"
#include "Terrain.h"

#include <vector>

namespace samples {

/// One rectangular block with a roof; the ridge runs along the x axis of its plan.
struct House {
    PlanBox plan;
    double floor = 0.0; ///< height of the ground floor
    double foot = 0.0;  ///< height of the underside of the foundations
    double eaves = 5.5; ///< height of the walls above the floor
    double pitch = 0.8; ///< rise of the roof per metre
    bool hipped = false;
    bool chimney = true;
    bool timberGable = true;
    Strip facade = Strip::FacadeWhite;
    Strip roof = Strip::RoofRed;
    osg::Vec2d access; ///< where the way from the door meets the road
    bool hasAccess = false;

    double ridgeHeight() const { return floor + eaves + plan.halfSize.y() * pitch; }
};

/// The layout of the village.
class Village {
public:
    Village(const Terrain& terrain, const LandCover& cover);

    const std::vector<House>& houses() const { return m_houses; }
    std::size_t houseCount() const { return m_dwellings; }
    /// Plan of the church tower.
    const PlanBox& tower() const { return m_tower; }
    /// Distance to the nearest building, negative inside; at most @p limit.
    double clearance(const osg::Vec2d& point, double limit) const;

    static constexpr double kNaveEaves = 8.5;
    static constexpr double kNavePitch = 1.25;
    static constexpr double kTowerHeight = 25.0;
    static constexpr double kSpireHeight = 17.0;

private:
    void lineRoad(int roadIndex);
    bool tryHouse(const PathHit& place, int roadIndex, double side, std::uint32_t seed);
    bool fits(const PlanBox& plan) const;
    void settle(House& house) const;
    void addWing(const House& main, double depth, double shift);

    const Terrain& m_terrain;
    const LandCover& m_cover;
    std::vector<House> m_houses;
    std::size_t m_dwellings = 0;
    PlanBox m_tower;
};

} // namespace samples
