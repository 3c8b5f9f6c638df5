// A laser scan of the church square.
#pragma once

#include "Canvas.h"
#include "Mesh.h"
#include "Terrain.h"

#include <osg/Node>
#include <osg/ref_ptr>

#include <cstddef>
#include <vector>

namespace samples {

/// What the scanner sees, and the pictures that colour it.
struct ScannedScene {
    std::vector<const MeshSet*> sets;
    const Canvas* ground = nullptr;
    const Canvas* atlas = nullptr;
};

/// The square as scanned from three stations, with the gaps, the rings and the noise of a real
/// scan. One geode for each station; the points keep their recorded colours under any light.
osg::ref_ptr<osg::Node> scanSquare(const Terrain& terrain, const ScannedScene& scene);

/// The number of points below @p scan.
std::size_t pointCount(osg::Node& scan);

} // namespace samples
