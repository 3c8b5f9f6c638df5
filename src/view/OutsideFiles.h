#pragma once

#include <osg/Node>
#include <osg/PagedLOD>
#include <osg/ProxyNode>
#include <osg/ref_ptr>

#include <string>
#include <vector>

namespace orbisk {

/// Makes a model's references to further model files (tiles that are loaded on demand, and what is
/// included) hold for the folder it is written to, for the life of this object: relative where it
/// is the folder they stand in, so that both can be moved together, else with their whole path.
class OutsideFiles {
public:
    /// @param path of the model that is written, in the local encoding.
    /// @param sourceFolder where it was read from.
    OutsideFiles(osg::Node& model, const std::string& path, const std::string& sourceFolder);
    ~OutsideFiles();

    OutsideFiles(const OutsideFiles&) = delete;
    OutsideFiles& operator=(const OutsideFiles&) = delete;

private:
    struct FormerFolder {
        osg::ref_ptr<osg::PagedLOD> node;
        std::string folder;
    };
    struct FormerName {
        osg::ref_ptr<osg::ProxyNode> node;
        unsigned int file = 0;
        std::string name;
    };

    std::vector<FormerFolder> m_folders;
    std::vector<FormerName> m_names;
};

} // namespace orbisk
