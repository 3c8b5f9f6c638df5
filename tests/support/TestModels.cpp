#include "support/TestModels.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/Image>
#include <osg/NodeVisitor>
#include <osg/PolygonMode>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <filesystem>

namespace orbisk::test {

namespace {

constexpr unsigned int cells = 8;
constexpr float side = 100.0f;
const osg::Vec3 centre(10, 20, 30);

osg::ref_ptr<osg::Image> chequers() {
    constexpr int pixels = 8;
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(pixels, pixels, 1, GL_RGB, GL_UNSIGNED_BYTE);
    for (int y = 0; y < pixels; ++y)
        for (int x = 0; x < pixels; ++x) {
            unsigned char* pixel = image->data(x, y);
            pixel[0] = (x + y) % 2 == 0 ? 220 : 30;
            pixel[1] = static_cast<unsigned char>(30 * x);
            pixel[2] = static_cast<unsigned char>(30 * y);
        }
    return image;
}

osg::ref_ptr<osg::Geometry> bentSquare() {
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec2Array> places = new osg::Vec2Array;
    osg::ref_ptr<osg::DrawElementsUInt> triangles = new osg::DrawElementsUInt(GL_TRIANGLES);
    for (unsigned int j = 0; j <= cells; ++j)
        for (unsigned int i = 0; i <= cells; ++i) {
            const osg::Vec2 place(static_cast<float>(i) / cells, static_cast<float>(j) / cells);
            const float height = 20.0f * place.x() * place.y();
            vertices->push_back(
                centre + osg::Vec3((place.x() - 0.5f) * side, (place.y() - 0.5f) * side, height));
            places->push_back(place);
        }
    for (unsigned int j = 0; j < cells; ++j)
        for (unsigned int i = 0; i < cells; ++i) {
            const unsigned int corner = j * (cells + 1) + i;
            for (const unsigned int step : {0u, 1u, cells + 2, 0u, cells + 2, cells + 1})
                triangles->push_back(corner + step);
        }
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    normals->push_back(osg::Vec3(0, 0, 1));
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(vertices);
    geometry->setTexCoordArray(0, places);
    geometry->setNormalArray(normals, osg::Array::BIND_OVERALL);
    geometry->addPrimitiveSet(triangles);
    return geometry;
}

class GeometryFinder : public osg::NodeVisitor {
public:
    GeometryFinder() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geometry& geometry) override {
        if (!found)
            found = &geometry;
    }

    osg::Geometry* found = nullptr;
};

} // namespace

osg::ref_ptr<osg::Node> makeModel() {
    const osg::ref_ptr<osg::Geometry> geometry = bentSquare();
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(chequers());
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::NEAREST);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::NEAREST);
    geometry->getOrCreateStateSet()->setTextureAttributeAndModes(0, texture);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(geometry);
    osg::ref_ptr<osg::Group> model = new osg::Group;
    model->addChild(geode);
    return model;
}

std::string writeTestModel(const std::string& name) {
    const osg::ref_ptr<osg::Node> model = makeModel();
    EXPECT_TRUE(osgDB::writeNodeFile(*model, name)) << name;
    return (std::filesystem::current_path() / name).string();
}

osg::Geometry* firstGeometry(osg::Node* node) {
    GeometryFinder finder;
    if (node)
        node->accept(finder);
    return finder.found;
}

int polygonModeOf(const osg::Geometry* geometry) {
    const osg::StateSet* state = geometry ? geometry->getStateSet() : nullptr;
    const auto* mode = state ? dynamic_cast<const osg::PolygonMode*>(
                                   state->getAttribute(osg::StateAttribute::POLYGONMODE))
                             : nullptr;
    return mode ? static_cast<int>(mode->getMode(osg::PolygonMode::FRONT)) : -1;
}

bool isTextured(const osg::Geometry* geometry, unsigned int unit) {
    const osg::StateSet* state = geometry ? geometry->getStateSet() : nullptr;
    return state && (state->getTextureMode(unit, GL_TEXTURE_2D) & osg::StateAttribute::ON) != 0;
}

} // namespace orbisk::test
