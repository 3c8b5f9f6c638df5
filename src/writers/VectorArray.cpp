#include "writers/VectorArray.h"

namespace orbisk {

namespace {

/// Takes the one element it is shown.
class ElementReader : public osg::ConstValueVisitor {
public:
    void apply(const osg::Vec2& v) override { value.set(v.x(), v.y(), 0.0); }
    void apply(const osg::Vec3& v) override { value = v; }
    void apply(const osg::Vec4& v) override { divide(osg::Vec4d(v)); }
    void apply(const osg::Vec2d& v) override { value.set(v.x(), v.y(), 0.0); }
    void apply(const osg::Vec3d& v) override { value = v; }
    void apply(const osg::Vec4d& v) override { divide(v); }
    void apply(const osg::Vec2s& v) override { value.set(v.x(), v.y(), 0.0); }
    void apply(const osg::Vec3s& v) override { value.set(v.x(), v.y(), v.z()); }
    void apply(const osg::Vec2b& v) override { value.set(v.x(), v.y(), 0.0); }
    void apply(const osg::Vec3b& v) override { value.set(v.x(), v.y(), v.z()); }

    osg::Vec3d value;

private:
    void divide(const osg::Vec4d& v) { value = osg::Vec3d(v.x(), v.y(), v.z()) / v.w(); }
};

bool canBeRead(const osg::Array& array) {
    switch (array.getType()) {
    case osg::Array::Vec2ArrayType:
    case osg::Array::Vec3ArrayType:
    case osg::Array::Vec4ArrayType:
    case osg::Array::Vec2dArrayType:
    case osg::Array::Vec3dArrayType:
    case osg::Array::Vec4dArrayType:
    case osg::Array::Vec2sArrayType:
    case osg::Array::Vec3sArrayType:
    case osg::Array::Vec2bArrayType:
    case osg::Array::Vec3bArrayType:
        return true;
    default:
        return false;
    }
}

} // namespace

VectorArray::VectorArray(const osg::Array* array)
    : m_array(array), m_size(array && canBeRead(*array) ? array->getNumElements() : 0) {}

osg::Vec3d VectorArray::at(unsigned int index) const {
    switch (m_array->getType()) {
    case osg::Array::Vec3ArrayType:
        return (*static_cast<const osg::Vec3Array*>(m_array))[index];
    case osg::Array::Vec3dArrayType:
        return (*static_cast<const osg::Vec3dArray*>(m_array))[index];
    default:
        ElementReader reader;
        m_array->accept(index, reader);
        return reader.value;
    }
}

bool VectorArray::single() const {
    return m_size == 0 || m_array->getDataType() != GL_DOUBLE;
}

} // namespace orbisk
