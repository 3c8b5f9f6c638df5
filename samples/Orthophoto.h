// The aerial picture that is draped over the valley.
#pragma once

#include "Canvas.h"
#include "GroundPainter.h"
#include "Trees.h"
#include "Village.h"

#include <vector>

namespace samples {

constexpr int kOrthoSize = 2048; ///< pixels along each side

/// Paints the whole model area: ground, roofs and crowns, relief shading and cast shadows.
Canvas paintOrthophoto(const Terrain& terrain, const ReliefGrid& relief, const LandCover& cover,
                       const Village& village, const std::vector<Tree>& trees);

} // namespace samples
