// The valley once more, as a tree of tiles that a viewer loads while it comes closer.
#pragma once

#include "Canvas.h"
#include "Trees.h"
#include "Village.h"

#include <string>
#include <vector>

namespace samples {

/// What the tiles are cut from.
struct TileSource {
    const Terrain* terrain = nullptr;
    const Village* village = nullptr;
    const std::vector<Tree>* trees = nullptr;
    const Canvas* ortho = nullptr;
    const Canvas* atlas = nullptr;
    std::string atlasFile; ///< in the folder of the root file
};

/// Facts for the summary.
struct TileTreeResult {
    int tiles = 0;
    std::size_t finestTriangles = 0;
};

/// Writes @p folder/tiles.osgb and the tiles below it. Throws std::runtime_error on failure.
TileTreeResult writeTileTree(const std::string& folder, const TileSource& source);

} // namespace samples
