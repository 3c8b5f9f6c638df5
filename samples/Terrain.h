// The shape of the sample valley: relief, river, roads and the levelled church square.
#pragma once

#include "PathNetwork.h"

#include <osg/Vec2d>
#include <osg/Vec3d>

#include <vector>

namespace samples {

/// Side length of the square model area in metres; it spans 0 .. kExtent east and north.
constexpr double kExtent = 1000.0;

/// Direction towards the sun of everything that is baked into textures: north-west, as on maps.
osg::Vec3d sunDirection();

/// A rectangle in plan.
struct PlanBox {
    osg::Vec2d center;
    osg::Vec2d halfSize;
    double angle = 0.0; ///< of its long side against east, radians

    /// @p point in the frame of the box.
    osg::Vec2d toLocal(const osg::Vec2d& point) const;
    osg::Vec2d toWorld(const osg::Vec2d& local) const;
    /// Distance to the outline, negative inside.
    double distance(const osg::Vec2d& point) const;
};

/// The valley as a function of the position in plan.
class Terrain {
public:
    Terrain();

    /// Height of the ground, of the water surface in the river bed.
    double height(double x, double y) const;
    osg::Vec3d normal(double x, double y) const;
    /// Height above the valley floor, 0 on the floor itself.
    double rise(double x, double y) const;
    /// Signed distance from the valley axis, positive to the north.
    double axisOffset(double x, double y) const;
    /// The point @p offset metres north of the valley axis at @p x.
    osg::Vec2d fromAxis(double x, double offset) const;
    /// Direction of the valley at @p x.
    double axisAngle(double x) const;

    const PathNetwork& roads() const { return m_roads; }
    const PathNetwork& river() const { return m_river; }
    double waterLevel(double x) const;

    osg::Vec2d bridgeCenter() const { return m_bridgeCenter; }
    osg::Vec2d bridgeDirection() const { return m_bridgeDirection; }
    double bridgeDeckHeight() const;

    /// The levelled church square.
    const PlanBox& square() const { return m_square; }
    /// The ground plan of the church's nave.
    const PlanBox& church() const { return m_church; }
    double squareHeight() const { return m_squareHeight; }

    static constexpr double kBankWidth = 7.0;
    static constexpr double kBridgeHalfLength = 17.0;

private:
    double baseHeight(double x, double y) const;
    double floorDistance(double x, double offset, double y) const;
    double withRoads(double x, double y, double ground) const;
    double withRiver(double x, double y, double ground) const;
    double riverOffset(double x) const;
    void addRiver();
    void addRoads();
    void addRoad(PathKind kind, double halfWidth, bool hasHouses,
                 const std::vector<osg::Vec2d>& controls);

    PathNetwork m_roads;
    PathNetwork m_river;
    osg::Vec2d m_bridgeCenter;
    osg::Vec2d m_bridgeDirection;
    PlanBox m_square;
    PlanBox m_church;
    double m_squareHeight = 0.0;
};

} // namespace samples
