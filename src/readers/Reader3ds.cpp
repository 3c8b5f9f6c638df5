#include "readers/Reader3ds.h"

#include "readers/File3ds.h"
#include "readers/Materials3ds.h"
#include "readers/MeshDrawables3ds.h"

#include <osg/Geode>
#include <osg/Group>
#include <osg/MatrixTransform>
#include <osg/Notify>
#include <osgDB/FileNameUtils>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <vector>

namespace orbisk {

namespace {

/// Nodes may show one mesh many times over, each with triangles of its own: a small file could ask
/// for more than there is memory. In faces; far beyond what modellers of this format could hold.
constexpr std::size_t mostShown = 20'000'000;

/// What a geometry takes up besides its faces, in faces.
constexpr std::size_t facesOfGeometry = 50;

/// The name of a node that stands for no mesh.
constexpr std::string_view emptyNode = "$$$DUMMY";

/// The name of a transform that takes vertices into the frame of their mesh.
constexpr const char* meshTransformName = "3DSMeshMatrix";

bool isFinite(const osg::Matrixd& matrix) {
    return std::all_of(matrix.ptr(), matrix.ptr() + 16,
                       [](double element) { return std::isfinite(element); });
}

/// The inverse, or the identity where there is none.
osg::Matrixd inverseOf(const osg::Matrixd& matrix) {
    const osg::Matrixd inverse = osg::Matrixd::inverse(matrix);
    return isFinite(inverse) ? inverse : osg::Matrixd::identity();
}

/// Turns what was read into a scene.
class SceneBuilder {
public:
    SceneBuilder(const File3ds& file, const std::string& folder, const osgDB::Options* options)
        : m_file(file) {
        Materials3ds materials(folder, options);
        for (const Material3ds& material : file.materials)
            m_stateSets.push_back(materials.makeStateSet(material));
    }

    /// Whether the scene is of a size that can be built.
    bool isReasonable() const {
        std::map<const Mesh3ds*, std::size_t> sizes;
        for (const Mesh3ds& mesh : m_file.meshes)
            sizes[&mesh] = mesh.faces.size() + facesOfGeometry * countGeometries3ds(mesh);
        std::size_t all = 0;
        for (const Node3ds& node : m_file.hierarchy.nodes)
            if (const Mesh3ds* mesh = meshOf(node))
                all += sizes[mesh];
        return all <= mostShown;
    }

    /// Null where there is nothing to show.
    osg::ref_ptr<osg::Node> build() const {
        if (m_file.hierarchy.nodes.empty())
            return buildMeshes();
        if (m_file.hierarchy.roots.size() == 1)
            return buildNode(m_file.hierarchy.roots.front());
        osg::ref_ptr<osg::Group> model = new osg::Group;
        for (const std::size_t root : m_file.hierarchy.roots)
            addTo(*model, buildNode(root));
        return model;
    }

private:
    static void addTo(osg::Group& group, const osg::ref_ptr<osg::Node>& child) {
        if (child)
            group.addChild(child);
    }

    /// Some programs write no hierarchy.
    osg::ref_ptr<osg::Node> buildMeshes() const {
        osg::ref_ptr<osg::Group> model = new osg::Group;
        for (const Mesh3ds& mesh : m_file.meshes)
            addTo(*model, makeGeode3ds(mesh, m_file.materials, m_stateSets));
        return model;
    }

    const Mesh3ds* meshOf(const Node3ds& node) const {
        const auto found = m_file.meshOfName.find(node.name);
        return node.showsMesh && found != m_file.meshOfName.end() ? &m_file.meshes[found->second]
                                                                  : nullptr;
    }

    osg::Matrixd matrixInParent(const Node3ds& node) const {
        const osg::Matrixd toWorld(node.matrix);
        if (!node.parent)
            return isFinite(toWorld) ? toWorld : osg::Matrixd::identity();
        const osg::Matrixd matrix =
            toWorld *
            osg::Matrixd::inverse(osg::Matrixd(m_file.hierarchy.nodes[*node.parent].matrix));
        return isFinite(matrix) ? matrix : osg::Matrixd::identity();
    }

    static std::string nameOf(const Node3ds& node) {
        const bool hasInstanceName =
            node.showsMesh && (node.name == emptyNode || !node.instanceName.empty());
        return hasInstanceName ? node.instanceName : node.name;
    }

    /// Null for a node that neither moves nor has anything below it.
    osg::ref_ptr<osg::Group> makeGroup(const Node3ds& node) const {
        const osg::Matrixd matrix = matrixInParent(node);
        osg::ref_ptr<osg::Group> group;
        if (!matrix.isIdentity())
            group = new osg::MatrixTransform(matrix);
        else if (!node.children.empty())
            group = new osg::Group;
        if (group)
            group->setName(nameOf(node));
        return group;
    }

    osg::ref_ptr<osg::Node> buildNode(std::size_t place) const {
        const Node3ds& node = m_file.hierarchy.nodes[place];
        const osg::ref_ptr<osg::Group> group = makeGroup(node);
        for (const std::size_t child : node.children)
            addTo(*group, buildNode(child));
        const Mesh3ds* mesh = meshOf(node);
        if (!mesh)
            return group;
        const osg::ref_ptr<osg::Node> shown = buildMesh(*mesh, node.pivot);
        if (!group)
            return shown;
        addTo(*group, shown);
        return group;
    }

    /// A mesh in its own frame, whose origin is the pivot.
    osg::ref_ptr<osg::Node> buildMesh(const Mesh3ds& mesh, const osg::Vec3& pivot) const {
        const osg::ref_ptr<osg::Geode> geode = makeGeode3ds(mesh, m_file.materials, m_stateSets);
        osg::Matrixd matrix = inverseOf(osg::Matrixd(mesh.matrix));
        const osg::Matrixd moved = matrix * osg::Matrixd::translate(-osg::Vec3d(pivot));
        if (pivot != osg::Vec3() && isFinite(moved))
            matrix = moved;
        if (matrix.isIdentity())
            return geode;
        const osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform(matrix);
        transform->setName(meshTransformName);
        addTo(*transform, geode);
        return transform;
    }

    const File3ds& m_file;
    std::vector<osg::ref_ptr<osg::StateSet>> m_stateSets;
};

} // namespace

Reader3ds::Reader3ds() {
    supportsExtension("3ds", "3D Studio model format");
}

osgDB::ReaderWriter::ReadResult Reader3ds::readBytes(FileBytes bytes, const std::string& fileName,
                                                     const osgDB::Options* options) const {
    const std::optional<File3ds> file = parse3ds(bytes.view());
    if (!file)
        return ReadResult::ERROR_IN_READING_FILE;
    const bool hasFolder = options && !options->getDatabasePathList().empty();
    const std::string folder =
        hasFolder ? options->getDatabasePathList().front() : osgDB::getFilePath(fileName);
    const SceneBuilder builder(*file, folder, options);
    if (!builder.isReasonable()) {
        OSG_WARN << fileName << " shows more than can be shown." << std::endl;
        return ReadResult::ERROR_IN_READING_FILE;
    }
    const osg::ref_ptr<osg::Node> model = builder.build();
    if (!model)
        return ReadResult::ERROR_IN_READING_FILE;
    if (model->getName().empty())
        model->setName(fileName);
    return model.get();
}

} // namespace orbisk
