#include "writers/PlacedGeometryVisitor.h"

#include <osg/Billboard>
#include <osg/Geometry>
#include <osg/Transform>

namespace orbisk {

PlacedGeometryVisitor::PlacedGeometryVisitor() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

void PlacedGeometryVisitor::apply(osg::Node& node) {
    enter(node);
    traverse(node);
    leave(node);
}

void PlacedGeometryVisitor::apply(osg::Transform& transform) {
    const osg::Matrixd former = m_toWorld;
    transform.computeLocalToWorldMatrix(m_toWorld, this);
    apply(static_cast<osg::Node&>(transform));
    m_toWorld = former;
}

void PlacedGeometryVisitor::apply(osg::Billboard& billboard) {
    enter(billboard);
    const osg::Matrixd former = m_toWorld;
    for (unsigned int i = 0; i < billboard.getNumChildren(); ++i) {
        if (i < billboard.getPositionList().size())
            m_toWorld.preMultTranslate(osg::Vec3d(billboard.getPosition(i)));
        billboard.getChild(i)->accept(*this);
        m_toWorld = former;
    }
    leave(billboard);
}

void PlacedGeometryVisitor::apply(osg::Geometry& geometry) {
    enter(geometry);
    visit(geometry, m_toWorld);
    leave(geometry);
}

} // namespace orbisk
