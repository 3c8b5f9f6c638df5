#include "view/LibraryGuard.h"

#include "view/ReadRules.h"

#include <osgDB/Callbacks>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

#include <set>

namespace orbisk {

namespace {

/// Where no library is. With an empty path the loader would go and look in the working folder.
constexpr const char* noLibrary = "/dev/null/?*";

const std::set<std::string> nodeKits = {"osg",       "osgAnimation", "osgFX",      "osgParticle",
                                        "osgShadow", "osgSim",       "osgTerrain", "osgText",
                                        "osgUtil",   "osgVolume"};

bool beginsWith(const std::string& text, const std::string& begin) {
    return text.compare(0, begin.size(), begin) == 0;
}

/// Whether a library of this file name ("osgdb_obj.so", "libosgSim.so") may be loaded.
bool isAllowed(const std::string& fileName) {
    const std::string name = osgDB::getNameLessExtension(fileName);
    const std::string pluginPrefix = "osgdb_";
    if (beginsWith(name, pluginPrefix))
        return isPluginAllowed(name.substr(pluginPrefix.size())).value_or(false);
    const std::string kitPrefix = "lib";
    return nodeKits.count(beginsWith(name, kitPrefix) ? name.substr(kitPrefix.size()) : name) != 0;
}

/// Whether a library is asked for by a bare name, or in the folder of the library's plug-ins.
bool isPlain(const std::string& name) {
    const std::string folder = osgDB::getFilePath(name);
    return folder.empty() || folder == std::string("osgPlugins-") + osgGetVersion();
}

class LibraryGuard : public osgDB::FindFileCallback {
public:
    std::string findLibraryFile(const std::string& name, const osgDB::Options*,
                                osgDB::CaseSensitivity sensitivity) override {
        if (!isPlain(name) || !isAllowed(osgDB::getSimpleFileName(name)))
            return noLibrary;
        const osgDB::FilePathList& folders = osgDB::Registry::instance()->getLibraryFilePathList();
        std::string found = osgDB::findFileInPath(name, folders, sensitivity);
        // A folder in the list may be the one of the plug-ins itself.
        if (found.empty())
            found = osgDB::findFileInPath(osgDB::getSimpleFileName(name), folders, sensitivity);
        return found.empty() ? noLibrary : found;
    }
};

} // namespace

void installLibraryGuard() {
    osgDB::Registry::instance()->setFindFileCallback(new LibraryGuard);
}

} // namespace orbisk
