// Building blocks of the houses: walls and roofs in the frame of a ground plan.
#pragma once

#include "Atlas.h"
#include "Mesh.h"
#include "Terrain.h"

namespace samples {

/// Adds walls, roofs and boxes that are given in the frame of a plan, z being absolute.
class Block {
public:
    Block(MeshSet& set, const PlanBox& plan) : m_set(set), m_plan(plan) {}

    osg::Vec3d at(double x, double y, double z) const;

    /// The four walls of the plan, showing the whole height of the facade @p strip.
    void facadeWalls(double bottom, double top, Strip strip);
    /// The four sides of a box, with u counted in repeats of @p repeat metres.
    void boxWalls(double x0, double y0, double x1, double y1, double bottom, double top,
                  Strip strip, double repeat);
    void boxTop(double x0, double y0, double x1, double y1, double z, Strip strip);
    /// The two triangles between the walls and the roof.
    void gables(double bottom, double rise, Strip strip, double vLow, double vHigh);
    /// A saddle roof of two slabs over the plan. @p wallTop is where walls and roof meet.
    void gableRoof(double wallTop, double pitch, double eavesOverhang, double gableOverhang,
                   Strip strip);
    void hipRoof(double wallTop, double pitch, double overhang, Strip strip);
    /// A pyramid over the plan enlarged by @p overhang.
    void pyramidRoof(double bottom, double height, double overhang, Strip strip);

private:
    void roofSlab(double turn, double wallTop, double pitch, double eavesOverhang,
                  double gableOverhang, Strip strip);
    void slope(const osg::Vec3d& left, const osg::Vec3d& right, const osg::Vec3d& topRight,
               const osg::Vec3d& topLeft, Strip strip);
    void fascia(double halfX, double halfY, double z);

    MeshSet& m_set;
    PlanBox m_plan;
};

} // namespace samples
