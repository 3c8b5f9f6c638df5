#pragma once

#include "readers/WholeFileReader.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/ref_ptr>

#include <string>

namespace orbisk::test {

/// What a reader makes of bytes; null where it refuses them.
template <class Reader>
osg::ref_ptr<osg::Node> readBytes(const std::string& bytes, const std::string& name = "model") {
    const osg::ref_ptr<Reader> reader = new Reader;
    return reader->readBytes(FileBytes(bytes), name, nullptr).getNode();
}

/// The first geometry of a model that is a geode or a group of geodes; null where it has none.
inline osg::Geometry* geometryOf(osg::Node* model, unsigned int solid = 0) {
    if (model && !model->asGeode() && model->asGroup() &&
        solid < model->asGroup()->getNumChildren())
        model = model->asGroup()->getChild(solid);
    const osg::Geode* geode = model ? model->asGeode() : nullptr;
    return geode && geode->getNumDrawables() > 0
               ? const_cast<osg::Geometry*>(geode->getDrawable(0)->asGeometry())
               : nullptr;
}

} // namespace orbisk::test
