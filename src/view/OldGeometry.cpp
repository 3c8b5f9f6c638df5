#include "view/OldGeometry.h"

#include <osg/PrimitiveSet>

namespace orbisk {

namespace {

/// Every corner is given a vertex of its own.
constexpr std::uint64_t mostCorners = 20'000'000;

const osg::IndexArray* indicesOf(const osg::Array& array) {
    return dynamic_cast<const osg::IndexArray*>(array.getUserData());
}

/// The corners of a primitive of this mode; 0 where all corners of a set or a length belong to one.
std::uint64_t cornersOf(GLenum mode) {
    switch (mode) {
    case GL_POINTS:
        return 1;
    case GL_LINES:
        return 2;
    case GL_TRIANGLES:
        return 3;
    case GL_QUADS:
        return 4;
    default:
        return 0;
    }
}

std::uint64_t primitivesIn(std::uint64_t corners, GLenum mode) {
    const std::uint64_t each = cornersOf(mode);
    if (each == 0)
        return corners > 0 ? 1 : 0;
    return (corners + each - 1) / each;
}

std::uint64_t primitivesIn(const osg::PrimitiveSet& set) {
    const auto* lengths = dynamic_cast<const osg::DrawArrayLengths*>(&set);
    if (!lengths)
        return primitivesIn(set.getNumIndices(), set.getMode());
    std::uint64_t count = 0;
    for (const GLsizei length : *lengths)
        count += primitivesIn(static_cast<std::uint64_t>(length), set.getMode());
    return count;
}

std::uint64_t cornersIn(const osg::Geometry& geometry) {
    std::uint64_t count = 0;
    for (const auto& set : geometry.getPrimitiveSetList())
        count += set->getNumIndices();
    return count;
}

} // namespace

std::size_t elementCount(const osg::Array& array) {
    const osg::IndexArray* indices = indicesOf(array);
    return indices ? indices->getNumElements() : array.getNumElements();
}

bool hasWrongIndices(const osg::Array& array) {
    const osg::IndexArray* indices = indicesOf(array);
    const unsigned int count = indices ? indices->getNumElements() : 0;
    for (unsigned int i = 0; i < count; ++i)
        if (indices->index(i) >= array.getNumElements())
            return true;
    return false;
}

std::uint64_t primitiveCount(const osg::Geometry& geometry) {
    std::uint64_t count = 0;
    for (const auto& set : geometry.getPrimitiveSetList())
        count += primitivesIn(*set);
    return count;
}

bool renewGeometry(osg::Geometry& geometry) {
    if (!geometry.checkForDeprecatedData())
        return false;
    if (cornersIn(geometry) > mostCorners)
        changeCompanions(geometry, [](osg::Array* array) {
            return array->getBinding() == bindPerPrimitive ? nullptr : array;
        });
    // What is renewed has other indices afterwards, which are of no use to another geometry.
    for (unsigned int i = 0; i < geometry.getNumPrimitiveSets(); ++i)
        if (geometry.getPrimitiveSet(i)->referenceCount() > 1)
            geometry.setPrimitiveSet(i, osg::clone(geometry.getPrimitiveSet(i)));
    geometry.fixDeprecatedData();
    return true;
}

} // namespace orbisk
