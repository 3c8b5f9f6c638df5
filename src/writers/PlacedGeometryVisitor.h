#pragma once

#include <osg/Matrixd>
#include <osg/NodeVisitor>

namespace osg {
class Geometry;
}

namespace orbisk {

/// Shows every geometry of a model as it stands in the world, once for each place where it stands:
/// `model.accept(visitor)`. All levels of detail, choices and frames of a sequence count. What
/// turns to the eye is not turned.
class PlacedGeometryVisitor : public osg::NodeVisitor {
public:
    PlacedGeometryVisitor();

    void apply(osg::Node& node) final;
    void apply(osg::Transform& transform) final;
    void apply(osg::Billboard& billboard) final;
    void apply(osg::Geometry& geometry) final;

protected:
    /// @param toWorld from the frame of the geometry's vertices.
    virtual void visit(osg::Geometry& geometry, const osg::Matrixd& toWorld) = 0;

    /// Called for every node, geometries included, before and after what is below it.
    virtual void enter(osg::Node&) {}
    virtual void leave(osg::Node&) {}

private:
    osg::Matrixd m_toWorld;
};

} // namespace orbisk
