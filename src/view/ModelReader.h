#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <string>

namespace orbisk {

/// Reads the model file `path` (local encoding) with the scene-graph library's reader for its
/// extension, its images included, behind the guard (`installReadGuard`). Runs on whichever thread
/// calls it.
/// @return the model, or null where the file is missing, of no known format or damaged, whatever
/// the reader does on the way: one that throws has failed as well.
osg::ref_ptr<osg::Node> readModel(const std::string& path);

} // namespace orbisk
