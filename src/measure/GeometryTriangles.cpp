#include "measure/GeometryTriangles.h"

#include <stdexcept>

namespace orbisk {

namespace {

constexpr std::size_t cornersPerTriangle = 3;
constexpr std::size_t cornersSharedInFan = 2;

bool isExaminedKind(osg::PrimitiveSet::Type type) {
    switch (type) {
    case osg::PrimitiveSet::DrawArraysPrimitiveType:
    case osg::PrimitiveSet::DrawElementsUBytePrimitiveType:
    case osg::PrimitiveSet::DrawElementsUShortPrimitiveType:
    case osg::PrimitiveSet::DrawElementsUIntPrimitiveType:
        return true;
    default:
        return false;
    }
}

/// A set drawn with `DrawArrays` may have been given a count below zero.
std::size_t indexCount(const osg::PrimitiveSet& set) {
    const unsigned int count = set.getNumIndices();
    const bool isNegative =
        set.getType() == osg::PrimitiveSet::DrawArraysPrimitiveType && static_cast<int>(count) < 0;
    return isNegative ? 0 : count;
}

std::size_t indexAt(const osg::PrimitiveSet& set, std::size_t position) {
    if (position >= indexCount(set))
        throw std::out_of_range("a triangle goes beyond the indices of its primitive set");
    return set.index(static_cast<unsigned int>(position));
}

} // namespace

std::size_t triangleCount(const osg::PrimitiveSet& set) {
    if (!isExaminedKind(set.getType()))
        return 0;
    const std::size_t count = indexCount(set);
    switch (set.getMode()) {
    case osg::PrimitiveSet::TRIANGLES:
        return (count + cornersPerTriangle - 1) / cornersPerTriangle;
    case osg::PrimitiveSet::TRIANGLE_STRIP:
        return count < cornersPerTriangle ? 0 : count - (cornersPerTriangle - 1);
    case osg::PrimitiveSet::TRIANGLE_FAN:
        return count < cornersSharedInFan ? 0 : count - cornersSharedInFan;
    default:
        return 0;
    }
}

TriangleCorners triangleCorners(const osg::PrimitiveSet& set, std::size_t number) {
    TriangleCorners positions{};
    switch (set.getMode()) {
    case osg::PrimitiveSet::TRIANGLES: {
        const std::size_t first = number * cornersPerTriangle;
        positions = {first, first + 1, first + 2};
        break;
    }
    case osg::PrimitiveSet::TRIANGLE_STRIP:
        positions = number % 2 == 0 ? TriangleCorners{number, number + 1, number + 2}
                                    : TriangleCorners{number, number + 2, number + 1};
        break;
    default: // a fan
        positions = {0, number + 1, number + 2};
        break;
    }
    return {indexAt(set, positions[0]), indexAt(set, positions[1]), indexAt(set, positions[2])};
}

PickVertices::PickVertices(const osg::Array* array, const osg::Matrixd& matrix)
    : m_floats(dynamic_cast<const osg::Vec3Array*>(array)),
      m_doubles(dynamic_cast<const osg::Vec3dArray*>(array)), m_matrix(matrix) {}

std::size_t PickVertices::size() const {
    if (m_floats)
        return m_floats->size();
    return m_doubles ? m_doubles->size() : 0;
}

osg::Vec3d PickVertices::at(std::size_t index) const {
    return m_floats ? osg::Vec3d(m_floats->at(index) * m_matrix) : m_doubles->at(index);
}

} // namespace orbisk
