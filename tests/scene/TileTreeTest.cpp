// Tile trees: those that the samples' program makes on demand, and what picking keeps of tiles that
// come and go while they are flown over.

#include "measure/IndexedVisitor.h"
#include "measure/PickIndex.h"
#include "support/ChildProcess.h"
#include "support/PickTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Geometry>
#include <osg/NodeVisitor>
#include <osg/PagedLOD>
#include <osgDB/ReadFile>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace orbisk::test {

namespace {

namespace fs = std::filesystem;

/// Collects the nodes below one that are loaded on demand, without what they have loaded.
class TileCollector : public osg::NodeVisitor {
public:
    TileCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::PagedLOD& tile) override { tiles.emplace_back(&tile); }

    std::vector<osg::ref_ptr<osg::PagedLOD>> tiles;
};

std::vector<osg::ref_ptr<osg::PagedLOD>> tilesOf(osg::Node& node) {
    TileCollector collector;
    node.accept(collector);
    return collector.tiles;
}

/// Counts triangles of lists, and geodes.
class ContentCounter : public osg::NodeVisitor {
public:
    ContentCounter() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geode& geode) override {
        ++geodes;
        traverse(geode);
    }

    void apply(osg::Geometry& geometry) override {
        for (const auto& set : geometry.getPrimitiveSetList())
            triangles += set->getNumIndices() / 3;
    }

    std::size_t geodes = 0;
    std::size_t triangles = 0;
};

osg::ref_ptr<osg::Node> read(const fs::path& path) {
    osg::ref_ptr<osg::Node> node = osgDB::readRefNodeFile(path.string());
    EXPECT_TRUE(node) << path;
    return node;
}

/// The finer tiles of one, as the pager reads them.
osg::ref_ptr<osg::Node> readFiner(const osg::PagedLOD& tile) {
    return read(fs::path(tile.getDatabasePath()) / tile.getFileName(1));
}

/// Everything of a tree, read down to its finest tiles.
ContentCounter contentOf(osg::Node& node) {
    ContentCounter counter;
    node.accept(counter);
    for (const auto& tile : tilesOf(node)) {
        const ContentCounter finer = contentOf(*readFiner(*tile));
        counter.geodes += finer.geodes;
        counter.triangles += finer.triangles;
    }
    return counter;
}

/// Picks straight down in the middle of a tile. @return whether it is hit.
bool pickMiddle(osg::Node& model, const osg::PagedLOD& tile, PickIndex& index) {
    constexpr double aboveAll = 5000.0;
    const osg::Vec3d middle = tile.getCenter();
    IndexedVisitor visitor({osg::Vec3d(middle.x(), middle.y(), aboveAll), osg::Vec3d(0, 0, -1)},
                           index);
    model.accept(visitor);
    index.finish();
    return !visitor.hits().empty();
}

/// The samples' tree, its coarsest tile replaced by the four below.
class TileTreeTest : public testing::Test {
protected:
    TileTreeTest() : m_root(new osg::Group) {
        const osg::ref_ptr<osg::Node> whole =
            read(fs::path(ORBISK_STAGE_DIR) / "samples/tiles.osgb");
        m_root->addChild(readFiner(*tilesOf(*whole).at(0)));
        m_tiles = tilesOf(*m_root);
        m_index.add(*m_root);
        m_index.finish();
    }

    /// A tile's finer ones come, are picked often enough to be indexed, and go again.
    void flyOver(osg::PagedLOD& tile) {
        tile.addChild(readFiner(tile));
        for (int i = 0; i < 3; ++i)
            EXPECT_TRUE(pickMiddle(*m_root, tile, m_index));
        // As the pager takes away what was not looked at for long.
        osg::NodeList gone;
        tile.removeExpiredChildren(1.0, 1, gone);
        ASSERT_EQ(gone.size(), 1u);
    }

    osg::ref_ptr<osg::Group> m_root;
    std::vector<osg::ref_ptr<osg::PagedLOD>> m_tiles;
    /// The index drops the trees of what is gone now and then.
    void pickTillCleaning() {
        constexpr int picks = 200;
        for (int i = 0; i < picks; ++i)
            pickMiddle(*m_root, *m_tiles[0], m_index);
    }

    PickIndex m_index;
};

} // namespace

TEST(TileTreeMakingTest, HasTilesOfTheSizeThatIsAskedFor) {
    const TemporaryFolder folder;
    ChildProcess program({ORBISK_MAKE_SAMPLES, "--tile-tree", "4", "6", folder.path().string()});
    ASSERT_EQ(program.wait(), 0) << program.errorOutput();
    const ContentCounter content = contentOf(*read(folder.path() / "tiles.osgb"));
    constexpr std::size_t tiles = 1 + 4 + 16 + 64;
    constexpr std::size_t groundTriangles = 2 * 6 * 6;
    constexpr std::size_t apronTriangles = 2 * 4 * 6;
    EXPECT_EQ(content.geodes, tiles);
    // Houses and trees come on top.
    EXPECT_GT(content.triangles, tiles * (groundTriangles + apronTriangles));
}

TEST(TileTreeMakingTest, RefusesTreesThatThePictureIsTooSmallFor) {
    const TemporaryFolder folder;
    for (const char* levels : {"0", "9", "-1"}) {
        ChildProcess program(
            {ORBISK_MAKE_SAMPLES, "--tile-tree", levels, "6", folder.path().string()});
        EXPECT_EQ(program.wait(), 1) << levels;
    }
}

TEST_F(TileTreeTest, TilesThatComeAreIndexedOncePicked) {
    ASSERT_EQ(m_tiles.size(), 4u);
    const std::size_t before = m_index.treeCount();
    osg::PagedLOD& tile = *m_tiles[0];
    tile.addChild(readFiner(tile));
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(pickMiddle(*m_root, tile, m_index));
    EXPECT_GT(m_index.treeCount(), before);
}

TEST_F(TileTreeTest, TilesThatGoTakeTheirTreesAlong) {
    const std::size_t trees = m_index.treeCount();
    const std::size_t bytes = m_index.bytes();
    for (const auto& tile : m_tiles)
        flyOver(*tile);
    EXPECT_GT(m_index.treeCount(), trees);
    pickTillCleaning();
    EXPECT_EQ(m_index.treeCount(), trees);
    EXPECT_EQ(m_index.bytes(), bytes);
}

TEST_F(TileTreeTest, LongFlightKeepsNoMoreTreesThanAShortOne) {
    const auto flyOverAll = [this] {
        for (const auto& tile : m_tiles)
            flyOver(*tile);
        pickTillCleaning();
        return m_index.bytes();
    };
    const std::size_t afterOneRound = flyOverAll();
    constexpr int furtherRounds = 7;
    for (int round = 0; round < furtherRounds; ++round)
        EXPECT_EQ(flyOverAll(), afterOneRound) << round;
}

} // namespace orbisk::test
