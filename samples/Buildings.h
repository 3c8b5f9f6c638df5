// Geometry of the houses, the church and the bridge.
#pragma once

#include "Mesh.h"
#include "Village.h"

namespace samples {

void addHouse(MeshSet& set, const House& house);
void addChurch(MeshSet& set, const Terrain& terrain, const Village& village);
void addBridge(MeshSet& set, const Terrain& terrain);

} // namespace samples
