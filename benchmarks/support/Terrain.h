#pragma once

#include <osg/Group>
#include <osg/ref_ptr>

#include <filesystem>

namespace orbisk::bench {

/// A hilly terrain of square tiles, each a geometry of its own in a geode of its own.
struct TerrainSize {
    int tilesAcross = 1;
    int quadsAcrossTile = 1;
    bool textured = false;
};

/// Builds the terrain, with a normal at every vertex; two of the same size are equal.
osg::ref_ptr<osg::Group> makeTerrain(const TerrainSize& size);

/// Writes a terrain of two million vertices, some 100 MB, into `folder`. @return its path. Throws
/// where it cannot be written.
std::filesystem::path writeLargeModel(const std::filesystem::path& folder);

} // namespace orbisk::bench
