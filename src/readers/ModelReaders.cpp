#include "readers/ModelReaders.h"

#include "readers/NativeReader.h"
#include "readers/ObjReader.h"
#include "readers/PlyReader.h"
#include "readers/Reader3ds.h"
#include "readers/StlReader.h"

#include <osg/ref_ptr>

#include <map>

namespace orbisk {

namespace {

using Readers = std::map<std::string, osg::ref_ptr<osgDB::ReaderWriter>>;

const Readers& modelReaders() {
    static const Readers readers = [] {
        const osg::ref_ptr<osgDB::ReaderWriter> native = new NativeReader;
        const osg::ref_ptr<osgDB::ReaderWriter> stl = new StlReader;
        return Readers{
            {"3ds", new Reader3ds}, {"obj", new ObjReader}, {"osg2", native}, {"osgb", native},
            {"osgt", native},       {"ply", new PlyReader}, {"sta", stl},     {"stl", stl}};
    }();
    return readers;
}

} // namespace

osgDB::ReaderWriter* modelReaderFor(const std::string& extension) {
    const auto found = modelReaders().find(extension);
    return found != modelReaders().end() ? found->second.get() : nullptr;
}

} // namespace orbisk
