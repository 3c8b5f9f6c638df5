// Wavefront files of the sample models.
#pragma once

#include "Mesh.h"

#include <string>
#include <utility>
#include <vector>

namespace samples {

/// A named part of a model.
using ObjPart = std::pair<std::string, const MeshSet*>;

/// Writes @p path and the material file of the same base name beside it.
/// The format has y pointing up, so the model is turned by a quarter about the x axis; readers
/// that know this turn it back. Throws std::runtime_error on failure.
void writeObj(const std::string& path, const std::vector<ObjPart>& parts,
              const std::string& groundFile, const std::string& atlasFile);

} // namespace samples
