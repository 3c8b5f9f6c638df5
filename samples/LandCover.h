// What grows where in the sample valley.
#pragma once

#include "Terrain.h"

#include <cstdint>

namespace samples {

/// A farmed parcel.
struct Parcel {
    std::uint32_t hash = 0;
    double edgeDistance = 0.0; ///< to its boundary
    double acrossRows = 0.0;   ///< coordinate across the direction of tilling
};

/// Land use as a function of the position in plan.
class LandCover {
public:
    explicit LandCover(const Terrain& terrain) : m_terrain(terrain) {}

    /// Above 0 inside a wood; grows towards its middle.
    double forest(double x, double y, double rise) const;
    /// 0 .. 1: how much of the place is farmed rather than wild or built up.
    double farming(double x, double y, double rise, double slope) const;
    Parcel parcel(double x, double y) const;
    /// 0 .. 1: how close to the middle of the village the place is.
    double village(double x, double y) const;
    /// Width of the gravel beside the river, on the side that @p side tells.
    double gravelWidth(double along, double side) const;

private:
    const Terrain& m_terrain;
};

} // namespace samples
