#include "measure/GeometryTriangles.h"

#include "measure/Prefetch.h"

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

namespace orbisk {

namespace {

constexpr std::size_t cornersPerTriangle = 3;
constexpr std::size_t cornersSharedInFan = 2;

std::size_t trianglesOf(GLenum mode, std::size_t indexCount) {
    switch (mode) {
    case osg::PrimitiveSet::TRIANGLES:
        return (indexCount + cornersPerTriangle - 1) / cornersPerTriangle;
    case osg::PrimitiveSet::TRIANGLE_STRIP:
        return indexCount < cornersPerTriangle ? 0 : indexCount - (cornersPerTriangle - 1);
    case osg::PrimitiveSet::TRIANGLE_FAN:
        return indexCount < cornersSharedInFan ? 0 : indexCount - cornersSharedInFan;
    default:
        return 0;
    }
}

/// The array as one of this class; null if it is another. Those of derived classes take longer.
template <class Wanted>
const Wanted* arrayAs(osg::Array::Type type, const osg::Array* array) {
    if (!array || array->getType() != type)
        return nullptr;
    return typeid(*array) == typeid(Wanted) ? static_cast<const Wanted*>(array)
                                            : dynamic_cast<const Wanted*>(array);
}

} // namespace

PickTriangles::PickTriangles(const osg::PrimitiveSet& set)
    : m_type(set.getType()), m_mode(set.getMode()) {
    switch (m_type) {
    case osg::PrimitiveSet::DrawArraysPrimitiveType: {
        const auto& arrays = static_cast<const osg::DrawArrays&>(set);
        m_first = static_cast<unsigned int>(arrays.getFirst());
        m_indexCount = static_cast<std::size_t>(std::max(arrays.getCount(), 0));
        break;
    }
    case osg::PrimitiveSet::DrawElementsUBytePrimitiveType:
    case osg::PrimitiveSet::DrawElementsUShortPrimitiveType:
    case osg::PrimitiveSet::DrawElementsUIntPrimitiveType:
        m_indices = set.getDataPointer();
        m_indexCount = set.getNumIndices();
        break;
    default:
        break;
    }
    m_count = trianglesOf(m_mode, m_indexCount);
}

TriangleCorners PickTriangles::corners(std::size_t number) const {
    TriangleCorners positions{};
    switch (m_mode) {
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
    return {indexAt(positions[0]), indexAt(positions[1]), indexAt(positions[2])};
}

std::size_t PickTriangles::indexAt(std::size_t position) const {
    if (position >= m_indexCount)
        throw std::out_of_range("a triangle goes beyond the indices of its primitive set");
    switch (m_type) {
    case osg::PrimitiveSet::DrawElementsUBytePrimitiveType:
        return static_cast<const GLubyte*>(m_indices)[position];
    case osg::PrimitiveSet::DrawElementsUShortPrimitiveType:
        return static_cast<const GLushort*>(m_indices)[position];
    case osg::PrimitiveSet::DrawElementsUIntPrimitiveType:
        return static_cast<const GLuint*>(m_indices)[position];
    default:
        return m_first + static_cast<unsigned int>(position);
    }
}

PickVertices::PickVertices(const osg::Array* array, const osg::Matrixd& matrix)
    : m_floats(arrayAs<osg::Vec3Array>(osg::Array::Vec3ArrayType, array)),
      m_doubles(arrayAs<osg::Vec3dArray>(osg::Array::Vec3dArrayType, array)), m_matrix(matrix),
      m_isIdentity(matrix.isIdentity()) {}

std::size_t PickVertices::size() const {
    if (m_floats)
        return m_floats->size();
    return m_doubles ? m_doubles->size() : 0;
}

void PickVertices::fetch(std::size_t index) const {
    if (index >= size())
        return;
    if (m_floats)
        prefetch(&(*m_floats)[index]);
    else
        prefetch(&(*m_doubles)[index]);
}

osg::Vec3d PickVertices::at(std::size_t index) const {
    if (!m_floats)
        return m_doubles->at(index);
    const osg::Vec3& vertex = m_floats->at(index);
    return m_isIdentity ? vertex : vertex * m_matrix;
}

} // namespace orbisk
