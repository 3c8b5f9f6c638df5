#include "writers/ModelContents.h"

#include "writers/PlacedGeometryVisitor.h"
#include "writers/PrimitiveWalk.h"
#include "writers/VectorArray.h"

#include <osg/Geometry>
#include <osg/Vec3d>

#include <algorithm>

namespace orbisk {

namespace {

/// Measures what a geometry draws.
class Measuring : public PrimitiveWalk {
public:
    Measuring(const osg::Geometry& geometry, const osg::Matrixd& toWorld, ModelContents& contents)
        : m_vertices(geometry.getVertexArray()), m_toWorld(toWorld), m_contents(contents) {
        m_contents.doubles |= !m_vertices.single();
    }

protected:
    void point(unsigned int index) override {
        if (exist(&index, 1))
            ++m_contents.points;
    }

    void line(unsigned int from, unsigned int to) override {
        const unsigned int ends[] = {from, to};
        if (exist(ends, 2))
            ++m_contents.lines;
    }

    void face(const unsigned int* corners, std::size_t count) override {
        if (!exist(corners, count))
            return;
        const osg::Vec3d origin = world(corners[0]);
        for (std::size_t i = 2; i < count; ++i) {
            const osg::Vec3d normal =
                (world(corners[i - 1]) - origin) ^ (world(corners[i]) - origin);
            const double doubleArea = normal.length();
            ++m_contents.triangles;
            m_contents.flatTriangles += doubleArea == 0.0 ? 1 : 0;
            m_contents.area += 0.5 * doubleArea;
        }
    }

private:
    bool exist(const unsigned int* indices, std::size_t count) {
        if (!std::all_of(indices, indices + count,
                         [this](unsigned int index) { return index < m_vertices.size(); }))
            return false;
        for (std::size_t i = 0; i < count; ++i)
            m_contents.box.expandBy(world(indices[i]));
        return true;
    }

    osg::Vec3d world(unsigned int index) const { return m_vertices.at(index) * m_toWorld; }

    VectorArray m_vertices;
    const osg::Matrixd& m_toWorld;
    ModelContents& m_contents;
};

class ContentsVisitor : public PlacedGeometryVisitor {
public:
    ModelContents contents;

protected:
    void visit(osg::Geometry& geometry, const osg::Matrixd& toWorld) override {
        Measuring measuring(geometry, toWorld, contents);
        geometry.accept(static_cast<osg::PrimitiveIndexFunctor&>(measuring));
    }
};

} // namespace

ModelContents contentsOf(osg::Node& model) {
    ContentsVisitor visitor;
    model.accept(visitor);
    return visitor.contents;
}

} // namespace orbisk
