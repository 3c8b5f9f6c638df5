// Single trees: where they stand and their low-poly crowns.
#pragma once

#include "LandCover.h"
#include "Mesh.h"
#include "Village.h"

#include <vector>

namespace samples {

struct Tree {
    osg::Vec3d foot;
    double radius = 3.0;
    double height = 12.0;
    double tint = 0.5; ///< 0 .. 1, position in the foliage strip
    bool conifer = false;
};

/// Woods, hedges, the trees along the river and in the gardens.
std::vector<Tree> plantTrees(const Terrain& terrain, const LandCover& cover,
                             const Village& village);

void addTree(MeshSet& set, const Tree& tree);

} // namespace samples
