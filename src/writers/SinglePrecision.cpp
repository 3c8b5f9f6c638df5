#include "writers/SinglePrecision.h"

#include "writers/VectorArray.h"

#include <osg/CopyOp>
#include <osg/Geometry>
#include <osg/NodeVisitor>

#include <vector>

namespace orbisk {

namespace {

/// Gathers the geometries whose vertices are of another kind.
class OtherVertices : public osg::NodeVisitor {
public:
    OtherVertices() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Geometry& geometry) override {
        const osg::Array* vertices = geometry.getVertexArray();
        if (vertices && vertices->getType() != osg::Array::Vec3ArrayType)
            geometries.push_back(&geometry);
    }

    std::vector<osg::Geometry*> geometries;
};

} // namespace

osg::ref_ptr<osg::Node> inSinglePrecision(osg::Node& model) {
    OtherVertices search;
    model.accept(search);
    if (search.geometries.empty())
        return &model;
    const osg::ref_ptr<osg::Node> copy = static_cast<osg::Node*>(
        model.clone(osg::CopyOp::DEEP_COPY_NODES | osg::CopyOp::DEEP_COPY_DRAWABLES));
    OtherVertices copies;
    copy->accept(copies);
    for (osg::Geometry* geometry : copies.geometries) {
        const VectorArray vertices(geometry->getVertexArray());
        const osg::ref_ptr<osg::Vec3Array> singles = new osg::Vec3Array;
        singles->reserve(vertices.size());
        for (unsigned int i = 0; i < vertices.size(); ++i)
            singles->push_back(vertices.at(i));
        geometry->setVertexArray(singles);
    }
    return copy;
}

} // namespace orbisk
