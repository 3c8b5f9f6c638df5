#pragma once

#include "view/ModelUpdateCallback.h"

#include <osg/Node>

#include <string>

namespace orbisk {

/// Writes `model` to `path` (local encoding) with the scene-graph library's writer for its
/// extension. Its textures stay in image files of their own: each is written beside the model
/// unless it stands there already, and the model names it relative to itself. The model is
/// unchanged afterwards; `callback`, where it is on the model, is taken off for the writing.
/// Nothing may be drawing the model meanwhile.
/// @param sourceFolder where the model was read from: its image files are copied as they are.
/// @return whether the model was written.
bool writeModel(osg::Node& model, ModelUpdateCallback* callback, const std::string& path,
                const std::string& sourceFolder);

} // namespace orbisk
