#include "TileTree.h"

#include "Buildings.h"
#include "SceneBuilder.h"

#include <osg/PagedLOD>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <stdexcept>

namespace samples {

namespace {

/// Pixels along the side of a tile's texture, where the orthophoto has that many for it.
constexpr int kUsualTexture = 256;
constexpr int kOrthoPixels = 2048;
constexpr int kJpegQuality = 80;
/// A tile is replaced by its children when it covers more pixels than this.
constexpr float kRefineAtPixels = 520.0F;

/// Address of a tile: 2^level tiles along each side.
struct TileAddress {
    int level = 0;
    int column = 0;
    int row = 0;

    double size() const { return kExtent / (1 << level); }
    double left() const { return column * size(); }
    double bottom() const { return row * size(); }
    std::string name() const {
        return "L" + std::to_string(level) + "_" + std::to_string(column) + "_" +
               std::to_string(row);
    }
    bool contains(double x, double y) const {
        return x >= left() && x < left() + size() && y >= bottom() && y < bottom() + size();
    }
};

/// The ground of one tile: a grid, and an apron around it that hides the gaps between levels.
class TileGrid {
public:
    TileGrid(const Terrain& terrain, const TileAddress& address, int cells)
        : m_terrain(terrain), m_address(address), m_cells(cells) {}

    Mesh mesh();

private:
    std::uint32_t index(int i, int j) const {
        return static_cast<std::uint32_t>(j * (m_cells + 1) + i);
    }
    void addVertex(int i, int j);
    void addApron(int i0, int j0, int stepI, int stepJ);

    const Terrain& m_terrain;
    TileAddress m_address;
    int m_cells;
    Mesh m_mesh;
};

void TileGrid::addVertex(int i, int j) {
    constexpr double kPositionSteps = 128.0;
    constexpr double kNormalSteps = 64.0;
    const double u = static_cast<double>(i) / m_cells;
    const double v = static_cast<double>(j) / m_cells;
    const double x = m_address.left() + u * m_address.size();
    const double y = m_address.bottom() + v * m_address.size();
    const osg::Vec3d position(x, y, m_terrain.height(x, y));
    m_mesh.vertices.push_back({quantized(position, kPositionSteps),
                               quantized(m_terrain.normal(x, y), kNormalSteps), osg::Vec2d(u, v)});
}

void TileGrid::addApron(int i0, int j0, int stepI, int stepJ) {
    const double depth = 0.012 * m_address.size();
    for (int k = 0; k < m_cells; ++k) {
        const std::uint32_t a = index(i0 + k * stepI, j0 + k * stepJ);
        const std::uint32_t b = index(i0 + (k + 1) * stepI, j0 + (k + 1) * stepJ);
        const auto low = static_cast<std::uint32_t>(m_mesh.vertices.size());
        for (const std::uint32_t top : {a, b}) {
            Vertex vertex = m_mesh.vertices[top];
            vertex.position.z() -= depth;
            m_mesh.vertices.push_back(vertex);
        }
        m_mesh.indices.insert(m_mesh.indices.end(), {low, low + 1, b, low, b, a});
    }
}

Mesh TileGrid::mesh() {
    m_mesh.surface = Surface::Ground;
    for (int j = 0; j <= m_cells; ++j) {
        for (int i = 0; i <= m_cells; ++i) {
            addVertex(i, j);
        }
    }
    for (int j = 0; j < m_cells; ++j) {
        for (int i = 0; i < m_cells; ++i) {
            const std::uint32_t a = index(i, j);
            const std::uint32_t b = index(i + 1, j);
            const std::uint32_t c = index(i + 1, j + 1);
            const std::uint32_t d = index(i, j + 1);
            const double ac = m_mesh.vertices[a].position.z() - m_mesh.vertices[c].position.z();
            const double bd = m_mesh.vertices[b].position.z() - m_mesh.vertices[d].position.z();
            // The diagonal with less fall keeps banks and roads smooth.
            if (std::fabs(ac) < std::fabs(bd)) {
                m_mesh.indices.insert(m_mesh.indices.end(), {a, b, c, a, c, d});
            } else {
                m_mesh.indices.insert(m_mesh.indices.end(), {a, b, d, b, c, d});
            }
        }
    }
    addApron(0, 0, 1, 0);
    addApron(m_cells, 0, 0, 1);
    addApron(m_cells, m_cells, -1, 0);
    addApron(0, m_cells, 0, -1);
    return m_mesh;
}

/// Writes the files of a tile tree from the leaves up.
class TileWriter {
public:
    TileWriter(const std::string& folder, const TileSource& source, const TileLevels& levels)
        : m_folder(folder), m_source(source), m_levels(levels) {}

    TileTreeResult write();

private:
    osg::ref_ptr<osg::Node> tile(const TileAddress& address, const std::string& pathPrefix);
    osg::ref_ptr<osg::Node> content(const TileAddress& address, const std::string& pathPrefix);
    void addObjects(MeshSet& set, const TileAddress& address) const;
    void writeChildren(const TileAddress& parent);
    const TileLevel& levelOf(const TileAddress& address) const {
        return m_levels[static_cast<std::size_t>(address.level)];
    }
    bool isFinest(const TileAddress& address) const {
        return &levelOf(address) == &m_levels.back();
    }

    std::string m_folder;
    const TileSource& m_source;
    const TileLevels& m_levels;
    TileTreeResult m_result;
};

void TileWriter::addObjects(MeshSet& set, const TileAddress& address) const {
    for (const House& house : m_source.village->houses()) {
        if (address.contains(house.plan.center.x(), house.plan.center.y())) {
            addHouse(set, house);
        }
    }
    // The picture shows all crowns already; half of them are enough to give the woods depth.
    for (std::size_t i = 0; i < m_source.trees->size(); i += 2) {
        const Tree& tree = (*m_source.trees)[i];
        if (address.contains(tree.foot.x(), tree.foot.y())) {
            addTree(set, tree);
        }
    }
    const osg::Vec2d church = m_source.terrain->church().center;
    if (address.contains(church.x(), church.y())) {
        addChurch(set, *m_source.terrain, *m_source.village);
    }
    const osg::Vec2d bridge = m_source.terrain->bridgeCenter();
    if (address.contains(bridge.x(), bridge.y())) {
        addBridge(set, *m_source.terrain);
    }
}

osg::ref_ptr<osg::Node> TileWriter::content(const TileAddress& address,
                                            const std::string& pathPrefix) {
    const int factor = levelOf(address).reduction;
    const int pixels = m_source.ortho->width() >> address.level;
    const Canvas picture =
        m_source.ortho->reduced(address.column * pixels, address.row * pixels, pixels, factor);
    const std::string pictureName = address.name() + ".jpg";
    if (!picture.writeJpeg(m_folder + "tiles/" + pictureName, kJpegQuality)) {
        throw std::runtime_error("cannot write " + pictureName);
    }
    // Tiles name their pictures relative to the file that they are stored in.
    const std::string up = pathPrefix.empty() ? "../" : "";
    const SurfaceStates states(picture, pathPrefix + pictureName, *m_source.atlas,
                               up + m_source.atlasFile);
    MeshSet set;
    set.mesh(Surface::Ground) = TileGrid(*m_source.terrain, address, levelOf(address).cells).mesh();
    if (isFinest(address)) {
        addObjects(set, address);
        m_result.finestTriangles += set.triangleCount();
    }
    ++m_result.tiles;
    return toGeode(set, states, address.name());
}

osg::ref_ptr<osg::Node> TileWriter::tile(const TileAddress& address,
                                         const std::string& pathPrefix) {
    const osg::ref_ptr<osg::Node> node = content(address, pathPrefix);
    if (isFinest(address)) {
        return node;
    }
    writeChildren(address);
    const osg::BoundingSphere bound = node->getBound();
    osg::ref_ptr<osg::PagedLOD> paged = new osg::PagedLOD;
    paged->setName(address.name());
    paged->setCenterMode(osg::LOD::USER_DEFINED_CENTER);
    paged->setCenter(bound.center());
    paged->setRadius(bound.radius());
    paged->setRangeMode(osg::LOD::PIXEL_SIZE_ON_SCREEN);
    paged->addChild(node.get(), 0.0F, kRefineAtPixels);
    paged->setFileName(1, pathPrefix + address.name() + "_children.osgb");
    paged->setRange(1, kRefineAtPixels, FLT_MAX);
    return paged;
}

void TileWriter::writeChildren(const TileAddress& parent) {
    osg::ref_ptr<osg::Group> group = new osg::Group;
    for (int k = 0; k < 4; ++k) {
        const TileAddress child = {parent.level + 1, parent.column * 2 + k % 2,
                                   parent.row * 2 + k / 2};
        group->addChild(tile(child, ""));
    }
    writeBinary(*group, m_folder + "tiles/" + parent.name() + "_children.osgb");
}

TileTreeResult TileWriter::write() {
    const osg::ref_ptr<osg::Node> root = tile(TileAddress(), "tiles/");
    writeBinary(*root, m_folder + "tiles.osgb");
    return m_result;
}

} // namespace

TileLevels sampleTileLevels() {
    return {{32, 8}, {40, 4}, {48, 1}};
}

TileLevels evenTileLevels(int count, int cells) {
    if (count < 1 || count > kMostTileLevels || cells < 1) {
        throw std::runtime_error("no such tile tree");
    }
    TileLevels levels;
    for (int level = 0; level < count; ++level) {
        levels.push_back({cells, std::max(1, (kOrthoPixels >> level) / kUsualTexture)});
    }
    return levels;
}

TileTreeResult writeTileTree(const std::string& folder, const TileSource& source,
                             const TileLevels& levels) {
    return TileWriter(folder, source, levels).write();
}

} // namespace samples
