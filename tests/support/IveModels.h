#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

#include <string>
#include <vector>

namespace orbisk::test {

/// A model, and what is in it.
struct IveModel {
    std::string name;
    osg::ref_ptr<osg::Node> node;
};

/// Models that have, together, a record of each kind that files of the IVE format may have and
/// that is read.
std::vector<IveModel> iveModels();

/// What the library's writer makes of a model.
/// @param options the writer's, as a text.
std::string iveFile(const osg::Node& model, const std::string& options = "");

} // namespace orbisk::test
