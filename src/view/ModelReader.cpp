#include "view/ModelReader.h"

#include <osg/Notify>
#include <osgDB/Options>
#include <osgDB/ReadFile>

#include <exception>

namespace orbisk {

osg::ref_ptr<osg::Node> readModel(const std::string& path) {
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options("ForceReadingImage");
    try {
        return osgDB::readRefNodeFile(path, options.get());
    } catch (const std::exception& failure) {
        OSG_WARN << "Reading " << path << " failed: " << failure.what() << std::endl;
    } catch (...) {
        OSG_WARN << "Reading " << path << " failed." << std::endl;
    }
    return nullptr;
}

} // namespace orbisk
