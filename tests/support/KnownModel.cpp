#include "support/KnownModel.h"

#include "support/SceneTools.h"

#include <gtest/gtest.h>
#include <osg/Array>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Material>
#include <osg/PrimitiveSet>
#include <osgDB/Options>
#include <osgDB/WriteFile>
#include <osgUtil/SmoothingVisitor>

#include <cmath>

namespace orbisk::test {

namespace {

constexpr int cells = 10;
constexpr float side = 40.0f;
constexpr int imageSide = 64;
constexpr int fieldSide = 16; ///< pixels of the texture

osg::ref_ptr<osg::Image> makeFields() {
    osg::ref_ptr<osg::Image> image = makeImage({230, 40, 30, 255}, imageSide);
    for (int y = 0; y < imageSide; ++y)
        for (int x = 0; x < imageSide; ++x)
            if ((x / fieldSide + y / fieldSide) % 2)
                image->setColor(osg::Vec4(0.1f, 0.7f, 0.15f, 1), static_cast<unsigned int>(x),
                                static_cast<unsigned int>(y));
    return image;
}

osg::ref_ptr<osg::Geometry> makeHills() {
    const osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    const osg::ref_ptr<osg::Vec2Array> places = new osg::Vec2Array;
    for (int row = 0; row <= cells; ++row)
        for (int column = 0; column <= cells; ++column) {
            const osg::Vec2 place(static_cast<float>(column) / cells,
                                  static_cast<float>(row) / cells);
            const float height = 3.0f * std::sin(place.x() * 5.0f) * std::cos(place.y() * 4.0f);
            corners->push_back({(place.x() - 0.5f) * side, (place.y() - 0.5f) * side, height});
            places->push_back(place);
        }
    const osg::ref_ptr<osg::DrawElementsUShort> triangles =
        new osg::DrawElementsUShort(osg::PrimitiveSet::TRIANGLES);
    constexpr int rowStep = cells + 1;
    for (int row = 0; row < cells; ++row)
        for (int column = 0; column < cells; ++column) {
            const int first = row * rowStep + column;
            for (const int corner : {first, first + 1, first + rowStep + 1, first,
                                     first + rowStep + 1, first + rowStep})
                triangles->push_back(static_cast<GLushort>(corner));
        }
    osg::ref_ptr<osg::Geometry> hills = new osg::Geometry;
    hills->setVertexArray(corners);
    hills->setTexCoordArray(0, places, osg::Array::BIND_PER_VERTEX);
    hills->addPrimitiveSet(triangles);
    osgUtil::SmoothingVisitor::smooth(*hills);
    addTexture(*hills->getOrCreateStateSet(), makeFields());
    return hills;
}

} // namespace

osg::ref_ptr<osg::Node> makeKnownModel() {
    osg::ref_ptr<osg::Group> model = new osg::Group;
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(makeHills());
    const osg::ref_ptr<osg::Geometry> roof = makeQuad(8.0f, osg::Vec3(9, 11, 8));
    const osg::ref_ptr<osg::Material> blue = new osg::Material;
    blue->setDiffuse(osg::Material::FRONT_AND_BACK, osg::Vec4(0.1f, 0.2f, 0.9f, 1));
    blue->setAmbient(osg::Material::FRONT_AND_BACK, osg::Vec4(0.1f, 0.2f, 0.9f, 1));
    roof->getOrCreateStateSet()->setAttribute(blue);
    geode->addDrawable(roof);
    model->addChild(geode);
    return model;
}

void writeKnownModel(const std::string& file) {
    const osg::ref_ptr<osgDB::Options> inside = new osgDB::Options("WriteImageHint=IncludeData");
    ASSERT_TRUE(osgDB::writeNodeFile(*makeKnownModel(), file, inside));
}

} // namespace orbisk::test
