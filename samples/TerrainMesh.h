// The valley surface as a triangulated irregular network.
#pragma once

#include "Mesh.h"
#include "Terrain.h"

namespace samples {

/// How finely a terrain is triangulated.
struct TinSettings {
    double tolerance = 0.1;        ///< allowed height error at the candidate points, metres
    double breaklineSpacing = 5.0; ///< of the points along roads and banks
    double coarsestStep = 32.0;    ///< spacing of the first candidate points
    double finestStep = 4.0;       ///< spacing of the last candidate points
};

/// Triangulates the terrain: break lines first, then points wherever the surface so far is off.
Mesh buildTin(const Terrain& terrain, const TinSettings& settings);

} // namespace samples
