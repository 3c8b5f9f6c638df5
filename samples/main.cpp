// Makes the sample models that come with the program.

#include "Assembly.h"
#include "Buildings.h"
#include "ObjFile.h"
#include "Orthophoto.h"
#include "PointCloudScan.h"
#include "SceneBuilder.h"
#include "TerrainMesh.h"
#include "TileTree.h"

#include <osgDB/WriteFile>

#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;

const std::string kOrthoFile = "valley_ortho.jpg"s;
const std::string kAtlasFile = "village_atlas.jpg"s;

/// The valley and everything on it, shared by all models but the assembly.
struct Valley {
    samples::Terrain terrain;
    samples::LandCover cover{terrain};
    samples::Village village{terrain, cover};
    std::vector<samples::Tree> trees = samples::plantTrees(terrain, cover, village);
    samples::Canvas ortho =
        samples::paintOrthophoto(terrain, samples::ReliefGrid(terrain), cover, village, trees);
    samples::Canvas atlas = samples::paintAtlas();
    samples::MeshSet ground;
    samples::MeshSet buildings;
    samples::MeshSet woods;
    samples::MeshSet villageTrees;
};

void buildMeshes(Valley& valley) {
    valley.ground.mesh(samples::Surface::Ground) =
        samples::buildTin(valley.terrain, samples::TinSettings());
    for (const samples::House& house : valley.village.houses()) {
        samples::addHouse(valley.buildings, house);
    }
    samples::addChurch(valley.buildings, valley.terrain, valley.village);
    samples::addBridge(valley.buildings, valley.terrain);
    for (const samples::Tree& tree : valley.trees) {
        samples::addTree(valley.woods, tree);
        if (valley.cover.village(tree.foot.x(), tree.foot.y()) > 0.4) {
            samples::addTree(valley.villageTrees, tree);
        }
    }
}

void writePictures(const Valley& valley, const std::string& folder) {
    constexpr int kOrthoQuality = 88;
    constexpr int kAtlasQuality = 88;
    if (!valley.ortho.writeJpeg(folder + kOrthoFile, kOrthoQuality) ||
        !valley.atlas.writeJpeg(folder + kAtlasFile, kAtlasQuality)) {
        throw std::runtime_error("cannot write the pictures");
    }
}

void writeValleyBinary(const Valley& valley, const std::string& folder) {
    const samples::SurfaceStates states(valley.ortho, kOrthoFile, valley.atlas, kAtlasFile);
    osg::ref_ptr<osg::Group> root = new osg::Group;
    root->setName("Valley");
    root->addChild(samples::toGeode(valley.ground, states, "Terrain"));
    root->addChild(samples::toGeode(valley.buildings, states, "Village"));
    root->addChild(samples::toGeode(valley.woods, states, "Trees"));
    samples::writeBinary(*root, folder + "valley.osgb");
    std::cout << "valley.osgb: terrain " << valley.ground.triangleCount() << ", village "
              << valley.buildings.triangleCount() << " (" << valley.village.houseCount()
              << " houses), trees " << valley.woods.triangleCount() << " triangles ("
              << valley.trees.size() << " trees)\n";
}

void writeValleyObj(const Valley& valley, const std::string& folder) {
    // Text takes several times the room, so this one is coarser and leaves the woods to the
    // orthophoto.
    samples::TinSettings coarse;
    coarse.tolerance = 1.2;
    coarse.breaklineSpacing = 10.0;
    coarse.finestStep = 8.0;
    samples::MeshSet ground;
    ground.mesh(samples::Surface::Ground) = samples::buildTin(valley.terrain, coarse);
    samples::writeObj(
        folder + "valley.obj",
        {{"Terrain", &ground}, {"Village", &valley.buildings}, {"Trees", &valley.villageTrees}},
        kOrthoFile, kAtlasFile);
    std::cout << "valley.obj: terrain " << ground.triangleCount() << ", village "
              << valley.buildings.triangleCount() << ", trees "
              << valley.villageTrees.triangleCount() << " triangles\n";
}

void writeScan(const Valley& valley, const std::string& folder) {
    samples::ScannedScene scene;
    scene.sets = {&valley.ground, &valley.buildings, &valley.woods};
    scene.ground = &valley.ortho;
    scene.atlas = &valley.atlas;
    const osg::ref_ptr<osg::Node> scan = samples::scanSquare(valley.terrain, scene);
    samples::writeBinary(*scan, folder + "scan.osgb");
    std::cout << "scan.osgb: " << samples::pointCount(*scan) << " points\n";
}

void writeTiles(const Valley& valley, const std::string& folder,
                const samples::TileLevels& levels) {
    std::filesystem::create_directories(folder + "tiles");
    samples::TileSource source;
    source.terrain = &valley.terrain;
    source.village = &valley.village;
    source.trees = &valley.trees;
    source.ortho = &valley.ortho;
    source.atlas = &valley.atlas;
    source.atlasFile = kAtlasFile;
    const samples::TileTreeResult result = samples::writeTileTree(folder, source, levels);
    std::cout << "tiles.osgb: " << result.tiles << " tiles, " << result.finestTriangles
              << " triangles in the finest level\n";
}

void writeAssembly(const std::string& folder) {
    const osg::ref_ptr<osg::Node> station = samples::makeTotalStation();
    if (!osgDB::writeNodeFile(*station, folder + "assembly.osgt")) {
        throw std::runtime_error("cannot write assembly.osgt");
    }
    std::cout << "assembly.osgt: a total station\n";
}

void writeAll(const std::string& folder) {
    std::filesystem::create_directories(folder);
    Valley valley;
    buildMeshes(valley);
    writePictures(valley, folder);
    writeValleyBinary(valley, folder);
    writeValleyObj(valley, folder);
    writeScan(valley, folder);
    writeTiles(valley, folder, samples::sampleTileLevels());
    writeAssembly(folder);
}

/// Nothing but a tile tree of its own size, and the pictures on it.
void writeTileTreeOnly(int levels, int cells, const std::string& folder) {
    std::filesystem::create_directories(folder);
    const Valley valley;
    writePictures(valley, folder);
    writeTiles(valley, folder, samples::evenTileLevels(levels, cells));
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool isTree = arguments.size() == 4 && arguments[0] == "--tile-tree";
    if (!isTree && arguments.size() != 1) {
        std::cerr << "usage: make_samples OUTDIR\n"
                     "       make_samples --tile-tree LEVELS CELLS OUTDIR\n";
        return 2;
    }
    try {
        const std::string folder = arguments.back() + "/";
        if (isTree) {
            writeTileTreeOnly(std::stoi(arguments[1]), std::stoi(arguments[2]), folder);
        } else {
            writeAll(folder);
        }
    } catch (const std::exception& error) {
        std::cerr << "make_samples: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
