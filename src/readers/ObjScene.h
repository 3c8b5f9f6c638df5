#pragma once

#include "readers/MaterialStates.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"

#include <osg/Group>
#include <osg/ref_ptr>

namespace orbisk {

/// Makes a scene of an OBJ file: a geode for each of its groups, with one geometry of indexed
/// triangles, lines and points, in the order of material, object and group name. Elements with a
/// corner that the file does not have, or that is not finite, are left out, and faces of fewer than
/// three corners.
///
/// Vertices are floats, unless these would move some vertex by more than a millionth of the size of
/// the model: they are doubles then, as exact as the file.
/// @return null where nothing is left.
osg::ref_ptr<osg::Group> makeObjScene(const ObjFile& file, const ObjOptions& options,
                                      MaterialStates& materials);

} // namespace orbisk
