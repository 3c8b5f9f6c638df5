#include "view/ModelReader.h"

#include "view/ReadGuard.h"

#include <osgDB/FileUtils>
#include <osgDB/Options>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

#include <utility>

namespace orbisk {

namespace {

/// Looks for the model where it was said to be and nowhere else: the library would take a file of
/// the same name in the working folder for one that is missing. What the model refers to is looked
/// for as ever.
class ModelInItsPlace : public osgDB::FindFileCallback {
public:
    explicit ModelInItsPlace(std::string path) : m_path(std::move(path)) {}

    std::string findDataFile(const std::string& name, const osgDB::Options* options,
                             osgDB::CaseSensitivity sensitivity) override {
        if (name == m_path && !osgDB::fileExists(name))
            return {};
        return FindFileCallback::findDataFile(name, options, sensitivity);
    }

private:
    std::string m_path;
};

} // namespace

osg::ref_ptr<osg::Node> readModel(const std::string& path) {
    installReadGuard();
    trustFolderOf(path);
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options("ForceReadingImage");
    options->setFindFileCallback(new ModelInItsPlace(path));
    return osgDB::readRefNodeFile(path, options.get());
}

} // namespace orbisk
