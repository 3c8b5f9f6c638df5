#pragma once

#include <osg/PrimitiveSet>

#include <cstddef>
#include <vector>

namespace orbisk {

/// Tells what a geometry's primitive sets are made of, one thing after the other, by indices into
/// its vertex array: `geometry.accept(walk)`. Strips, fans and loops are taken apart; a quad and a
/// polygon stay whole. Indices come as they stand in the set, so one may lie beyond the array.
class PrimitiveWalk : public osg::PrimitiveIndexFunctor {
public:
    void setVertexArray(unsigned int, const osg::Vec2*) override {}
    void setVertexArray(unsigned int, const osg::Vec3*) override {}
    void setVertexArray(unsigned int, const osg::Vec4*) override {}
    void setVertexArray(unsigned int, const osg::Vec2d*) override {}
    void setVertexArray(unsigned int, const osg::Vec3d*) override {}
    void setVertexArray(unsigned int, const osg::Vec4d*) override {}

    void drawArrays(GLenum mode, GLint first, GLsizei count) override;
    void drawElements(GLenum mode, GLsizei count, const GLubyte* indices) override;
    void drawElements(GLenum mode, GLsizei count, const GLushort* indices) override;
    void drawElements(GLenum mode, GLsizei count, const GLuint* indices) override;

protected:
    virtual void point(unsigned int index) = 0;
    virtual void line(unsigned int from, unsigned int to) = 0;

    /// A triangle, a quad or a polygon.
    /// @param corners of which there are `count`, in the order in which they are drawn.
    virtual void face(const unsigned int* corners, std::size_t count) = 0;

private:
    template <typename Index>
    void walkElements(GLenum mode, GLsizei count, const Index* indices);
    void walk(GLenum mode);
    void walkLines(GLenum mode);
    void walkFaces(GLenum mode);
    void triangle(std::size_t a, std::size_t b, std::size_t c);

    std::vector<unsigned int> m_indices; ///< of the set that is walked
};

} // namespace orbisk
