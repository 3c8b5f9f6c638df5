#pragma once

#include <osg/Vec3d>

#include <filesystem>
#include <string>
#include <vector>

namespace orbisk::test {

/// What a folder of real models tells about one of its files.
struct ModelFacts {
    std::string file; ///< relative to the folder
    long bytes = 0;
    osg::Vec3d center; ///< of the bounding sphere
    double radius = 0.0;
};

/// Reads the tables of `MODELS.md` in a folder of real models: the files that can be read and
/// whose bounding sphere is given.
std::vector<ModelFacts> readModelFacts(const std::filesystem::path& folder);

} // namespace orbisk::test
