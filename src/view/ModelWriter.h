#pragma once

#include "view/ModelUpdateCallback.h"

#include <osg/Node>

#include <string>

namespace orbisk {

/// Writes `model` to `path` (local encoding) in the format of its extension: OBJ by this program's
/// own writer, all else by the scene-graph library's. Numbers in text formats have all their
/// digits. The textures stay in image files of their own: each is written beside the model unless
/// it stands there already, and the model names it relative to itself. The model is unchanged
/// afterwards; `callback`, where it is on the model, is taken off for the writing. Nothing may be
/// drawing the model meanwhile.
///
/// A file that stands at `path` is replaced in one step, and only by one that is whole: where the
/// disk is full, the writer fails, or what it wrote in a foreign format has not the model in it,
/// nothing changes in that folder.
/// @param sourceFolder where the model was read from: its image files are copied as they are.
/// @return whether the model was written.
bool writeModel(osg::Node& model, ModelUpdateCallback* callback, const std::string& path,
                const std::string& sourceFolder);

} // namespace orbisk
