#pragma once

#include "readers/File3ds.h"

#include <osg/Geode>
#include <osg/StateSet>
#include <osg/ref_ptr>

#include <cstddef>
#include <vector>

namespace orbisk {

/// How many geometries a mesh becomes.
std::size_t countGeometries3ds(const Mesh3ds& mesh);

/// Makes what is drawn of a mesh of a 3DS file: a geode of its name with a geometry for each
/// material and group of smoothed faces. Vertices are where they stand in the file. Faces that name
/// a vertex that isn't there, or isn't finite, are left out.
///
/// @param stateSets of the file's materials, in their order.
/// @return null where the file has neither materials nor faces for it.
osg::ref_ptr<osg::Geode> makeGeode3ds(const Mesh3ds& mesh,
                                      const std::vector<Material3ds>& materials,
                                      const std::vector<osg::ref_ptr<osg::StateSet>>& stateSets);

} // namespace orbisk
