// The colour of the bare ground, before shadows and buildings.
#pragma once

#include "Canvas.h"
#include "LandCover.h"
#include "ReliefGrid.h"

namespace samples {

/// Mixes the colours of meadows, fields, woods, rock, water and roads.
class GroundPainter {
public:
    GroundPainter(const Terrain& terrain, const LandCover& cover)
        : m_terrain(terrain), m_cover(cover) {}

    /// @param paved  0 .. 1: ways and yards
    Color color(double x, double y, const ReliefSample& relief, double paved) const;

private:
    Color meadow(double x, double y, const ReliefSample& relief) const;
    Color field(double x, double y, const Color& meadowColor) const;
    Color wood(double x, double y) const;
    Color rock(double x, double y, const ReliefSample& relief) const;
    Color garden(double x, double y, const Color& meadowColor) const;
    Color withRoads(double x, double y, const Color& ground) const;
    Color withRiver(double x, double y, const Color& ground) const;

    const Terrain& m_terrain;
    const LandCover& m_cover;
};

} // namespace samples
