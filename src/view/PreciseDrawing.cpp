#include "view/PreciseDrawing.h"

#include <osg/BoundingBox>
#include <osg/NodeVisitor>
#include <osg/RenderInfo>
#include <osg/State>
#include <osg/Transform>

#include <typeinfo>

namespace orbisk {

namespace {

/// Beyond it, a float is no longer exact to the millimetre.
constexpr double largestPreciseCoordinate = 8192.0;

/// Draws a copy of its geometry whose vertices are relative to their middle. The copy follows the
/// geometry's vertices. Where a frame is drawn, and on the main thread while none is.
class RelativeDrawing : public osg::Drawable::DrawCallback {
public:
    /// @param usedDisplayList what the geometry did before.
    explicit RelativeDrawing(bool usedDisplayList) : m_usedDisplayList(usedDisplayList) {}

    void drawImplementation(osg::RenderInfo& renderInfo,
                            const osg::Drawable* drawable) const override {
        const auto& geometry = *drawable->asGeometry();
        const auto* vertices = dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray());
        if (!vertices) {
            geometry.drawImplementation(renderInfo);
            return;
        }
        follow(geometry, *vertices);
        osg::State& state = *renderInfo.getState();
        const osg::Matrixd former = state.getModelViewMatrix();
        state.applyModelViewMatrix(osg::Matrixd::translate(m_middle) * former);
        m_copy->draw(renderInfo);
        state.applyModelViewMatrix(former);
    }

    void releaseGLObjects(osg::State* state) const override {
        if (m_copy)
            m_copy->releaseGLObjects(state);
    }

    void resizeGLObjectBuffers(unsigned int size) override {
        if (m_copy)
            m_copy->resizeGLObjectBuffers(size);
    }

    bool usedDisplayList() const { return m_usedDisplayList; }

private:
    void follow(const osg::Geometry& geometry, const osg::Vec3dArray& vertices) const {
        const bool same = m_copy && m_source == &vertices && m_size == vertices.size() &&
                          m_modifications == vertices.getModifiedCount();
        if (same)
            return;
        osg::BoundingBoxd box;
        for (const osg::Vec3d& vertex : vertices)
            box.expandBy(vertex);
        m_middle = box.valid() ? box.center() : osg::Vec3d();
        const osg::ref_ptr<osg::Vec3Array> relative = new osg::Vec3Array;
        relative->reserve(vertices.size());
        for (const osg::Vec3d& vertex : vertices)
            relative->push_back(vertex - m_middle);
        m_copy = new osg::Geometry(geometry, osg::CopyOp::SHALLOW_COPY);
        m_copy->setDrawCallback(nullptr);
        m_copy->setUseDisplayList(m_usedDisplayList);
        m_copy->setVertexArray(relative);
        m_source = &vertices;
        m_size = vertices.size();
        m_modifications = vertices.getModifiedCount();
    }

    bool m_usedDisplayList;
    mutable osg::ref_ptr<osg::Geometry> m_copy;
    mutable osg::Vec3d m_middle;
    mutable osg::ref_ptr<const osg::Vec3dArray> m_source; ///< that the copy was made of
    mutable std::size_t m_size = 0;
    mutable unsigned int m_modifications = 0;
};

class GeometryCollector : public osg::NodeVisitor {
public:
    GeometryCollector() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(~0u); }

    void apply(osg::Geometry& geometry) override { geometries.emplace_back(&geometry); }

    std::vector<osg::ref_ptr<osg::Geometry>> geometries;
};

/// Derived kinds compute what they draw.
bool wantsPrecision(const osg::Geometry& geometry) {
    return typeid(geometry) == typeid(osg::Geometry) && !geometry.getDrawCallback() &&
           dynamic_cast<const osg::Vec3dArray*>(geometry.getVertexArray());
}

/// Of nested transforms picking takes the innermost, so they are left to the optimiser to join.
class OffsetKeeper : public osg::NodeVisitor {
public:
    OffsetKeeper() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) { setNodeMaskOverride(~0u); }

    void apply(osg::Transform& transform) override {
        const unsigned int before = m_transforms++;
        traverse(transform);
        const bool alone = before == 0 && m_transforms == 1;
        if (before == 0)
            m_transforms = 0;
        osg::Matrixd matrix;
        transform.computeLocalToWorldMatrix(matrix, this);
        if (alone && matrix.getTrans().length() > largestPreciseCoordinate)
            transform.setDataVariance(osg::Object::DYNAMIC);
    }

private:
    unsigned int m_transforms = 0; ///< of the outermost one that is visited and below it
};

} // namespace

void drawPrecisely(osg::Node& model) {
    GeometryCollector collector;
    model.accept(collector);
    for (const auto& geometry : collector.geometries) {
        if (!wantsPrecision(*geometry))
            continue;
        geometry->setDrawCallback(new RelativeDrawing(geometry->getUseDisplayList()));
        // A list would keep the matrix of the frame it was made in.
        geometry->setUseDisplayList(false);
    }
}

void keepLargeOffsets(osg::Node& model) {
    OffsetKeeper keeper;
    model.accept(keeper);
}

PreciseDrawingOff::PreciseDrawingOff(osg::Node& model) {
    GeometryCollector collector;
    model.accept(collector);
    for (const auto& geometry : collector.geometries) {
        const auto* drawing = dynamic_cast<const RelativeDrawing*>(geometry->getDrawCallback());
        if (!drawing)
            continue;
        m_geometries.push_back({geometry, geometry->getDrawCallback()});
        geometry->setUseDisplayList(drawing->usedDisplayList());
        geometry->setDrawCallback(nullptr);
    }
}

PreciseDrawingOff::~PreciseDrawingOff() {
    for (const Former& former : m_geometries) {
        former.geometry->setDrawCallback(former.callback);
        former.geometry->setUseDisplayList(false);
    }
}

} // namespace orbisk
