#include "measure/MeasurementGeometry.h"

#include <osg/BoundingBox>
#include <osg/GL>
#include <osg/Matrixd>
#include <osg/PrimitiveSet>
#include <osg/RenderInfo>
#include <osg/State>

namespace orbisk {

namespace {

/// Display lists and buffers would hold on to matrices and memory of drawings that change with
/// every motion of the mouse.
void drawFromMemory(osg::Geometry& geometry) {
    geometry.setUseDisplayList(false);
    geometry.setUseVertexBufferObjects(false);
    geometry.setDataVariance(osg::Object::STATIC);
}

osg::ref_ptr<osg::Vec3Array> relativeTo(const osg::Vec3d& origin, const osg::Vec3dArray& vertices) {
    osg::ref_ptr<osg::Vec3Array> relative = new osg::Vec3Array;
    relative->reserve(vertices.size());
    for (const osg::Vec3d& vertex : vertices)
        relative->push_back(osg::Vec3(vertex - origin));
    return relative;
}

/// A projection to the same pixels that puts everything before the eye at one depth, so that
/// neither the near nor the far plane cuts it.
osg::ref_ptr<osg::RefMatrix> withoutDepth(const osg::Matrix& projection) {
    constexpr int depthColumn = 2;
    constexpr int rows = 4;
    osg::ref_ptr<osg::RefMatrix> flat = new osg::RefMatrix(projection);
    for (int row = 0; row < rows; ++row)
        (*flat)(row, depthColumn) = 0.0;
    return flat;
}

} // namespace

MeasurementGeometry::MeasurementGeometry(GLenum mode, osg::Vec3dArray& vertices,
                                         const osg::Vec4& colour)
    : m_origin(vertices.empty() ? osg::Vec3d() : vertices.front()), m_relative(new osg::Geometry) {
    const osg::ref_ptr<osg::Vec4Array> colours = new osg::Vec4Array;
    colours->push_back(colour);
    const osg::ref_ptr<osg::DrawArrays> primitives =
        new osg::DrawArrays(mode, 0, static_cast<GLsizei>(vertices.size()));
    for (osg::Geometry* geometry : {static_cast<osg::Geometry*>(this), m_relative.get()}) {
        drawFromMemory(*geometry);
        geometry->setColorArray(colours, osg::Array::BIND_OVERALL);
        geometry->addPrimitiveSet(primitives);
    }
    setVertexArray(&vertices);
    m_relative->setVertexArray(relativeTo(m_origin, vertices));
}

MeasurementGeometry::~MeasurementGeometry() = default;

osg::BoundingBox MeasurementGeometry::computeBoundingBox() const {
    return {};
}

void MeasurementGeometry::drawImplementation(osg::RenderInfo& renderInfo) const {
    osg::State& state = *renderInfo.getState();
    state.applyModelViewMatrix(osg::Matrixd::translate(m_origin) * state.getModelViewMatrix());
    state.applyProjectionMatrix(withoutDepth(state.getProjectionMatrix()));
    // The library goes by an array's address to see whether OpenGL has it already. An array that
    // was freed since may have stood at the same one.
    state.disableAllVertexArrays();
    osg::Vec4 former;
    glGetFloatv(GL_CURRENT_COLOR, former.ptr());
    m_relative->drawImplementation(renderInfo);
    // Set, not popped off a stack: only this carries it on to the material that follows it.
    state.Color(former.r(), former.g(), former.b(), former.a());
    state.disableAllVertexArrays();
}

} // namespace orbisk
