#include "support/SceneTools.h"

#include <osg/Array>
#include <osg/Notify>
#include <osg/PrimitiveSet>
#include <osg/Texture2D>

namespace orbisk::test {

osg::ref_ptr<osg::Geometry> makeQuad(float side, const osg::Vec3& center) {
    const float half = side / 2.0f;
    const osg::ref_ptr<osg::Vec3Array> corners = new osg::Vec3Array;
    corners->push_back(center + osg::Vec3(-half, -half, 0));
    corners->push_back(center + osg::Vec3(half, -half, 0));
    corners->push_back(center + osg::Vec3(half, half, 0));
    corners->push_back(center + osg::Vec3(-half, half, 0));
    const osg::ref_ptr<osg::Vec2Array> places = new osg::Vec2Array;
    for (const osg::Vec2& place :
         {osg::Vec2(0, 0), osg::Vec2(1, 0), osg::Vec2(1, 1), osg::Vec2(0, 1)})
        places->push_back(place);
    const osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array(1);
    normals->front() = osg::Vec3(0, 0, 1);
    osg::ref_ptr<osg::Geometry> quad = new osg::Geometry;
    quad->setVertexArray(corners);
    quad->setTexCoordArray(0, places, osg::Array::BIND_PER_VERTEX);
    quad->setNormalArray(normals, osg::Array::BIND_OVERALL);
    const osg::ref_ptr<osg::DrawElementsUByte> triangles =
        new osg::DrawElementsUByte(osg::PrimitiveSet::TRIANGLES);
    for (const unsigned char corner : {0, 1, 2, 0, 2, 3})
        triangles->push_back(corner);
    quad->addPrimitiveSet(triangles);
    return quad;
}

osg::ref_ptr<osg::Geode> makeQuadGeode(float side, const osg::Vec3& center) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(makeQuad(side, center));
    return geode;
}

osg::ref_ptr<osg::Image> makeImage(const osg::Vec4ub& colour, int side) {
    osg::ref_ptr<osg::Image> image = new osg::Image;
    image->allocateImage(side, side, 1, GL_RGBA, GL_UNSIGNED_BYTE);
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image->setColor(osg::Vec4(colour.r(), colour.g(), colour.b(), colour.a()) / 255.0f,
                            static_cast<unsigned int>(x), static_cast<unsigned int>(y));
    return image;
}

bool hasColour(const osg::Image& image, const osg::Vec4ub& colour) {
    const osg::Vec4 wanted = osg::Vec4(colour.r(), colour.g(), colour.b(), colour.a()) / 255.0f;
    const float tolerance = 1.0f / 255.0f;
    for (int y = 0; y < image.t(); ++y)
        for (int x = 0; x < image.s(); ++x)
            if ((image.getColor(x, y) - wanted).length() > tolerance)
                return false;
    return image.s() > 0 && image.t() > 0;
}

void addTexture(osg::StateSet& stateSet, osg::Image* image, unsigned int unit) {
    stateSet.setTextureAttributeAndModes(unit, new osg::Texture2D(image), osg::StateAttribute::ON);
}

Frames::Frames() : m_stamp(new osg::FrameStamp) {
    m_visitor.setFrameStamp(m_stamp);
}

void Frames::update(osg::Node& scene, int count) {
    constexpr double secondsPerFrame = 1.0 / 60.0;
    for (int i = 0; i < count; ++i) {
        const unsigned int frame = m_stamp->getFrameNumber() + 1;
        m_stamp->setFrameNumber(frame);
        m_stamp->setSimulationTime(frame * secondsPerFrame);
        m_stamp->setReferenceTime(frame * secondsPerFrame);
        m_visitor.setTraversalNumber(frame);
        scene.accept(m_visitor);
    }
}

QuietLibrary::QuietLibrary() : m_formerLevel(osg::getNotifyLevel()) {
    osg::setNotifyLevel(osg::ALWAYS);
}

QuietLibrary::~QuietLibrary() {
    osg::setNotifyLevel(static_cast<osg::NotifySeverity>(m_formerLevel));
}

} // namespace orbisk::test
