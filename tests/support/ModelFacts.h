#pragma once

#include <osg/Vec3d>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orbisk::test {

/// What a folder of real models tells about one of its files.
struct ModelFacts {
    std::string file; ///< relative to the folder
    long bytes = 0;
    osg::Vec3d center;   ///< of the bounding sphere
    double radius = 0.0; ///< -1 where there is none
    std::size_t triangles = 0;
    std::optional<double> area; ///< of the triangles, as they are loaded
};

/// Reads the tables of `MODELS.md` in a folder of real models: the files that can be read.
std::vector<ModelFacts> readModelFacts(const std::filesystem::path& folder);

} // namespace orbisk::test
