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

/// The tiles of one level, 2^level along each side of the model.
struct TileLevel {
    int cells = 0;     ///< of the ground's grid along the side of a tile
    int reduction = 1; ///< pixels of the orthophoto that make one pixel of a tile's texture
};

/// From the coarsest level to the finest.
using TileLevels = std::vector<TileLevel>;

/// The levels of the sample that comes with the program.
TileLevels sampleTileLevels();

/// Levels of tiles that all have so many cells along their sides, for trees of any size. At most
/// `kMostTileLevels` of them: the picture has no more to cut up.
constexpr int kMostTileLevels = 8;
TileLevels evenTileLevels(int count, int cells);

/// Facts for the summary.
struct TileTreeResult {
    int tiles = 0;
    std::size_t finestTriangles = 0;
};

/// Writes @p folder/tiles.osgb and the tiles below it, into the folder "tiles", which is there.
/// Throws std::runtime_error on failure.
TileTreeResult writeTileTree(const std::string& folder, const TileSource& source,
                             const TileLevels& levels);

} // namespace samples
