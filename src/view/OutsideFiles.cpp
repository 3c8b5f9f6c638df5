#include "view/OutsideFiles.h"

#include <osg/NodeVisitor>

#include <filesystem>
#include <system_error>

namespace orbisk {

namespace fs = std::filesystem;

namespace {

class ReferenceCollector : public osg::NodeVisitor {
public:
    ReferenceCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(~0u); }

    void apply(osg::PagedLOD& node) override {
        tiles.emplace_back(&node);
        traverse(node);
    }

    void apply(osg::ProxyNode& node) override {
        proxies.emplace_back(&node);
        traverse(node);
    }

    std::vector<osg::ref_ptr<osg::PagedLOD>> tiles;
    std::vector<osg::ref_ptr<osg::ProxyNode>> proxies;
};

fs::path absoluteFolder(const fs::path& folder) {
    std::error_code error;
    const fs::path whole = fs::absolute(folder.empty() ? fs::path(".") : folder, error);
    return whole.lexically_normal();
}

bool sameFolder(const fs::path& one, const fs::path& other) {
    std::error_code error;
    return fs::equivalent(one, other, error);
}

} // namespace

OutsideFiles::OutsideFiles(osg::Node& model, const std::string& path,
                           const std::string& sourceFolder) {
    ReferenceCollector references;
    model.accept(references);
    const fs::path target = absoluteFolder(fs::path(path).parent_path());
    const auto folderOf = [&](const std::string& databasePath) {
        return absoluteFolder(databasePath.empty() ? sourceFolder : databasePath);
    };
    for (const auto& tile : references.tiles) {
        m_folders.push_back({tile, tile->getDatabasePath()});
        const fs::path folder = folderOf(tile->getDatabasePath());
        tile->setDatabasePath(sameFolder(folder, target) ? std::string() : folder.string());
    }
    for (const auto& proxy : references.proxies) {
        const fs::path folder = folderOf(proxy->getDatabasePath());
        if (sameFolder(folder, target))
            continue;
        for (unsigned int i = 0; i < proxy->getNumFileNames(); ++i) {
            const std::string name = proxy->getFileName(i);
            std::error_code error;
            if (name.empty() || !fs::exists(folder / name, error))
                continue;
            m_names.push_back({proxy, i, name});
            proxy->setFileName(i, (folder / name).lexically_normal().string());
        }
    }
}

OutsideFiles::~OutsideFiles() {
    for (const FormerFolder& former : m_folders)
        former.node->setDatabasePath(former.folder);
    for (const FormerName& former : m_names)
        former.node->setFileName(former.file, former.name);
}

} // namespace orbisk
