#pragma once

#include "readers/WholeFileReader.h"

#include <osg/Geometry>
#include <osg/NodeVisitor>
#include <osg/Notify>
#include <osgDB/Registry>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace orbisk::fuzz {

/// Ends the process where a geometry can't be drawn and picked without harm.
class SafetyVisitor : public osg::NodeVisitor {
public:
    SafetyVisitor() : osg::NodeVisitor(TRAVERSE_ALL_CHILDREN) {}

    void apply(osg::Transform& node) override {
        osg::Matrixd matrix;
        node.computeLocalToWorldMatrix(matrix, this);
        for (int i = 0; i < 16; ++i)
            demand(std::isfinite(matrix.ptr()[i]));
        traverse(node);
    }

    void apply(osg::Geometry& geometry) override {
        const osg::Array* vertices = geometry.getVertexArray();
        demand(vertices != nullptr);
        const unsigned int count = vertices->getNumElements();
        for (const osg::Array* array :
             {geometry.getNormalArray(), geometry.getColorArray(), geometry.getTexCoordArray(0)})
            demand(!array || array->getBinding() != osg::Array::BIND_PER_VERTEX ||
                   array->getNumElements() == count);
        if (const auto* floats = dynamic_cast<const osg::Vec3Array*>(vertices))
            for (const osg::Vec3& place : *floats)
                demand(isFinite(place));
        if (const auto* doubles = dynamic_cast<const osg::Vec3dArray*>(vertices))
            for (const osg::Vec3d& place : *doubles)
                demand(isFinite(place));
        for (const auto& set : geometry.getPrimitiveSetList())
            for (unsigned int i = 0; i < set->getNumIndices(); ++i)
                demand(set->index(i) < count);
    }

private:
    static void demand(bool condition) {
        if (!condition)
            std::abort();
    }

    template <class Vector>
    static bool isFinite(const Vector& place) {
        return std::isfinite(place.x()) && std::isfinite(place.y()) && std::isfinite(place.z());
    }
};

/// Ends the process where a model can't be drawn and picked without harm.
inline void requireSafe(osg::Node& model) {
    SafetyVisitor visitor;
    model.accept(visitor);
    model.getBound();
}

/// Keeps what a model refers to from being read.
class NothingElseIsRead : public osgDB::ReadFileCallback {
public:
    osgDB::ReaderWriter::ReadResult readImage(const std::string&, const osgDB::Options*) override {
        return osgDB::ReaderWriter::ReadResult::FILE_NOT_FOUND;
    }
};

/// Any bytes as a file of `Reader`'s: it gives nothing, or a safe model.
template <class Reader>
int readAnyBytes(const std::uint8_t* data, std::size_t size) {
    static const osg::ref_ptr<Reader> reader = [] {
        osg::setNotifyLevel(osg::ALWAYS);
        osgDB::Registry::instance()->setReadFileCallback(new NothingElseIsRead);
        return new Reader;
    }();
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const osg::ref_ptr<osg::Node> model =
        reader->readBytes(FileBytes(bytes), "model", nullptr).getNode();
    if (model)
        requireSafe(*model);
    return 0;
}

} // namespace orbisk::fuzz
