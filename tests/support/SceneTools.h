#pragma once

#include <osg/FrameStamp>
#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Image>
#include <osg/Node>
#include <osg/StateSet>
#include <osg/Vec3>
#include <osg/Vec4ub>
#include <osg/ref_ptr>
#include <osgUtil/UpdateVisitor>

#include <string>

namespace orbisk::test {

/// A square of two triangles in the plane z = centre.z, with normals and texture coordinates.
osg::ref_ptr<osg::Geometry> makeQuad(float side = 2.0f, const osg::Vec3& center = osg::Vec3());

/// A geode of one such square.
osg::ref_ptr<osg::Geode> makeQuadGeode(float side = 2.0f, const osg::Vec3& center = osg::Vec3());

/// A square picture of one colour.
osg::ref_ptr<osg::Image> makeImage(const osg::Vec4ub& colour, int side = 4);

/// Whether each pixel of `image` has this colour; an image without alpha is opaque.
bool hasColour(const osg::Image& image, const osg::Vec4ub& colour);

/// Textures `stateSet` with `image` on a texture unit.
void addTexture(osg::StateSet& stateSet, osg::Image* image, unsigned int unit = 0);

/// Runs update traversals as a viewer does before each frame.
class Frames {
public:
    Frames();

    void update(osg::Node& scene, int count = 1);

private:
    osg::ref_ptr<osg::FrameStamp> m_stamp;
    osgUtil::UpdateVisitor m_visitor;
};

/// Counts how often it is called in update traversals.
class CountingCallback : public osg::NodeCallback {
public:
    void operator()(osg::Node* node, osg::NodeVisitor* visitor) override {
        ++calls;
        traverse(node, visitor);
    }

    int calls = 0;

protected:
    ~CountingCallback() override = default;
};

/// Keeps the library's messages off the standard error while it lives.
class QuietLibrary {
public:
    QuietLibrary();
    ~QuietLibrary();

    QuietLibrary(const QuietLibrary&) = delete;
    QuietLibrary& operator=(const QuietLibrary&) = delete;

private:
    int m_formerLevel;
};

} // namespace orbisk::test
