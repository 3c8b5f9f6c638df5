#include "support/Terrain.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Image>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <cmath>
#include <stdexcept>

namespace orbisk::bench {

namespace {

constexpr float tileSide = 100.0f;
constexpr float hillHeight = 12.0f;
constexpr float hillLength = 35.0f; ///< a hill's extent divided by two pi
constexpr int textureSide = 256;
constexpr int chequerSide = 16;
constexpr TerrainSize largeModel{4, 360, false};

osg::Vec3 pointAt(float x, float y) {
    return {x, y, hillHeight * std::sin(x / hillLength) * std::cos(y / hillLength)};
}

osg::Vec3 normalAt(float x, float y) {
    const float slope = hillHeight / hillLength;
    osg::Vec3 normal(-slope * std::cos(x / hillLength) * std::cos(y / hillLength),
                     slope * std::sin(x / hillLength) * std::sin(y / hillLength), 1.0f);
    normal.normalize();
    return normal;
}

osg::ref_ptr<osg::DrawElementsUInt> makeTriangles(unsigned int quads) {
    const unsigned int row = quads + 1;
    const osg::ref_ptr<osg::DrawElementsUInt> triangles =
        new osg::DrawElementsUInt(osg::PrimitiveSet::TRIANGLES);
    triangles->reserve(quads * quads * 6);
    for (unsigned int y = 0; y < quads; ++y)
        for (unsigned int x = 0; x < quads; ++x) {
            const unsigned int corner = y * row + x;
            for (const unsigned int index :
                 {corner, corner + 1, corner + row + 1, corner, corner + row + 1, corner + row})
                triangles->push_back(index);
        }
    return triangles;
}

osg::ref_ptr<osg::StateSet> makeChequeredState() {
    const osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(textureSide, textureSide, 1, GL_RGB, GL_UNSIGNED_BYTE);
    for (int y = 0; y < textureSide; ++y)
        for (int x = 0; x < textureSide; ++x) {
            const bool light = (x / chequerSide + y / chequerSide) % 2 == 0;
            image->setColor(light ? osg::Vec4(0.9f, 0.8f, 0.6f, 1) : osg::Vec4(0.4f, 0.6f, 0.3f, 1),
                            static_cast<unsigned int>(x), static_cast<unsigned int>(y));
        }
    const osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    state->setTextureAttributeAndModes(0, new osg::Texture2D(image));
    return state;
}

osg::ref_ptr<osg::Geometry> makeTile(const TerrainSize& size, float left, float bottom) {
    const osg::ref_ptr<osg::Vec3Array> points = new osg::Vec3Array;
    const osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    const osg::ref_ptr<osg::Vec2Array> texturePlaces = new osg::Vec2Array;
    const auto quads = static_cast<float>(size.quadsAcrossTile);
    for (int row = 0; row <= size.quadsAcrossTile; ++row)
        for (int column = 0; column <= size.quadsAcrossTile; ++column) {
            const osg::Vec2 place(static_cast<float>(column) / quads,
                                  static_cast<float>(row) / quads);
            const float x = left + tileSide * place.x();
            const float y = bottom + tileSide * place.y();
            points->push_back(pointAt(x, y));
            normals->push_back(normalAt(x, y));
            if (size.textured)
                texturePlaces->push_back(place);
        }
    const osg::ref_ptr<osg::Geometry> tile = new osg::Geometry;
    tile->setVertexArray(points);
    tile->setNormalArray(normals, osg::Array::BIND_PER_VERTEX);
    if (size.textured)
        tile->setTexCoordArray(0, texturePlaces, osg::Array::BIND_PER_VERTEX);
    tile->addPrimitiveSet(makeTriangles(static_cast<unsigned int>(size.quadsAcrossTile)));
    return tile;
}

} // namespace

osg::ref_ptr<osg::Group> makeTerrain(const TerrainSize& size) {
    osg::ref_ptr<osg::Group> terrain = new osg::Group;
    const osg::ref_ptr<osg::StateSet> state = size.textured ? makeChequeredState() : nullptr;
    for (int row = 0; row < size.tilesAcross; ++row)
        for (int column = 0; column < size.tilesAcross; ++column) {
            const osg::ref_ptr<osg::Geometry> tile = makeTile(
                size, tileSide * static_cast<float>(column), tileSide * static_cast<float>(row));
            tile->setStateSet(state);
            const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
            geode->addDrawable(tile);
            terrain->addChild(geode);
        }
    return terrain;
}

std::filesystem::path writeLargeModel(const std::filesystem::path& folder) {
    std::filesystem::path path = folder / "large.osgb";
    if (!osgDB::writeNodeFile(*makeTerrain(largeModel), path.string()))
        throw std::runtime_error("cannot write " + path.string());
    return path;
}

} // namespace orbisk::bench
