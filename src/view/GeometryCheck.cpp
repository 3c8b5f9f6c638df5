#include "view/GeometryCheck.h"

#include "view/OldGeometry.h"

#include <osg/Notify>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>

namespace orbisk {

namespace {

/// Its square is finite in single precision, also when three of them are added.
constexpr double largestCoordinate = 1e19;

constexpr GLenum lastMode = GL_PATCHES;
constexpr int mostInstances = 1 << 20;

/// The vertices from the first one on that a primitive set uses; nothing where it cannot be drawn.
using VertexCount = std::optional<std::uint64_t>;

template <typename Index>
VertexCount elementsIn(const osg::PrimitiveSet& set) {
    const auto* indices = static_cast<const Index*>(set.getDataPointer());
    // The library has no pointer to the indices of an empty set.
    const std::size_t count = set.getNumIndices();
    Index highest = 0;
    for (std::size_t i = 0; i < count; ++i)
        highest = std::max(highest, indices[i]);
    return count == 0 ? 0 : std::uint64_t(highest) + 1;
}

VertexCount verticesFrom(std::int64_t first, std::int64_t count) {
    if (first < 0 || count < 0)
        return std::nullopt;
    return count == 0 ? 0 : static_cast<std::uint64_t>(first + count);
}

VertexCount lengthsIn(const osg::DrawArrayLengths& set) {
    std::int64_t sum = 0;
    for (const GLsizei length : set) {
        if (length < 0)
            return std::nullopt;
        sum += length;
    }
    return verticesFrom(set.getFirst(), sum);
}

VertexCount verticesUsed(const osg::PrimitiveSet& set) {
    switch (set.getType()) {
    case osg::PrimitiveSet::DrawArraysPrimitiveType: {
        const auto& arrays = static_cast<const osg::DrawArrays&>(set);
        return verticesFrom(arrays.getFirst(), arrays.getCount());
    }
    case osg::PrimitiveSet::DrawArrayLengthsPrimitiveType:
        return lengthsIn(static_cast<const osg::DrawArrayLengths&>(set));
    case osg::PrimitiveSet::DrawElementsUBytePrimitiveType:
        return elementsIn<GLubyte>(set);
    case osg::PrimitiveSet::DrawElementsUShortPrimitiveType:
        return elementsIn<GLushort>(set);
    case osg::PrimitiveSet::DrawElementsUIntPrimitiveType:
        return elementsIn<GLuint>(set);
    default:
        // What the graphics card would take from a buffer cannot be looked at.
        return std::nullopt;
    }
}

bool isDrawable(const osg::PrimitiveSet& set) {
    return set.getMode() <= lastMode && set.getNumInstances() >= 0 &&
           set.getNumInstances() <= mostInstances;
}

/// Leaves out the primitive sets that go beyond the vertices.
/// @return how many vertices the others use.
std::uint64_t checkPrimitives(osg::Geometry& geometry, std::uint64_t vertexCount) {
    std::uint64_t used = 0;
    osg::Geometry::PrimitiveSetList kept;
    for (const auto& set : geometry.getPrimitiveSetList()) {
        const VertexCount vertices = set && isDrawable(*set) ? verticesUsed(*set) : VertexCount();
        if (!vertices || *vertices > vertexCount)
            continue;
        used = std::max(used, *vertices);
        kept.push_back(set);
    }
    if (kept.size() != geometry.getNumPrimitiveSets())
        geometry.setPrimitiveSetList(kept);
    // The native format cannot tell a list of these from one of primitive sets that went wrong.
    if (kept.empty()) {
        geometry.setTexCoordArrayList({});
        geometry.setVertexAttribArrayList({});
    }
    return used;
}

/// What drawing looks up in the arrays beside the vertices.
struct Drawn {
    std::uint64_t vertices;
    std::uint64_t sets;
    std::uint64_t primitives;
};

/// Whether drawing finds an element of `array` wherever it looks for one.
bool isLongEnough(const osg::Array& array, const Drawn& drawn) {
    const std::uint64_t elements = elementCount(array);
    if (array.getBinding() == bindPerPrimitive)
        return elements >= drawn.primitives;
    switch (array.getBinding()) {
    case osg::Array::BIND_PER_VERTEX:
        return elements >= drawn.vertices;
    case osg::Array::BIND_PER_PRIMITIVE_SET:
        return elements >= drawn.sets;
    case osg::Array::BIND_OVERALL:
        return elements > 0;
    default:
        return true;
    }
}

/// Leaves out what comes beside the vertices where it is too short.
void checkCompanions(osg::Geometry& geometry, std::uint64_t vertices) {
    const Drawn drawn{vertices, geometry.getNumPrimitiveSets(), primitiveCount(geometry)};
    changeCompanions(
        geometry, [&](osg::Array* array) { return isLongEnough(*array, drawn) ? array : nullptr; });
}

void checkIndices(osg::Geometry& geometry) {
    if (geometry.getVertexArray() && hasWrongIndices(*geometry.getVertexArray()))
        geometry.setVertexArray(nullptr);
    changeCompanions(geometry,
                     [](osg::Array* array) { return hasWrongIndices(*array) ? nullptr : array; });
}

/// Leaves out what goes beyond the arrays.
void checkLengths(osg::Geometry& geometry) {
    const osg::Array* vertices = geometry.getVertexArray();
    const std::uint64_t used = checkPrimitives(geometry, vertices ? elementCount(*vertices) : 0);
    checkCompanions(geometry, used);
}

std::uint32_t magnitudeBits(float number) {
    constexpr std::uint32_t withoutSign = 0x7fffffff;
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits & withoutSign;
}

std::uint64_t magnitudeBits(double number) {
    constexpr std::uint64_t withoutSign = 0x7fffffffffffffff;
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits & withoutSign;
}

/// The numbers of IEEE 754 without their signs have the order of their bits, NaN behind infinity.
/// Comparing these the compiler looks at many numbers at once.
template <typename Number>
bool areUsableNumbers(const Number* numbers, std::size_t count) {
    auto highest = magnitudeBits(Number(0));
    for (std::size_t i = 0; i < count; ++i)
        highest = std::max(highest, magnitudeBits(numbers[i]));
    return highest <= magnitudeBits(static_cast<Number>(largestCoordinate));
}

template <typename Number>
bool replaceUnusable(osg::Array& array) {
    auto* numbers = static_cast<Number*>(const_cast<GLvoid*>(array.getDataPointer()));
    const std::size_t count = array.getTotalDataSize() / sizeof(Number);
    if (areUsableNumbers(numbers, count))
        return false;
    for (std::size_t i = 0; i < count; ++i)
        if (!isUsableCoordinate(static_cast<double>(numbers[i])))
            numbers[i] = std::numeric_limits<Number>::quiet_NaN();
    return true;
}

bool replaceUnusableIn(osg::Array& vertices) {
    if (vertices.getNumElements() == 0)
        return false;
    switch (vertices.getDataType()) {
    case GL_FLOAT:
        return replaceUnusable<GLfloat>(vertices);
    case GL_DOUBLE:
        return replaceUnusable<GLdouble>(vertices);
    default:
        return false;
    }
}

} // namespace

bool isUsableCoordinate(double coordinate) {
    return std::fabs(coordinate) <= largestCoordinate;
}

void checkGeometry(osg::Geometry& geometry) {
    osg::Array* vertices = geometry.getVertexArray();
    if (vertices && replaceUnusableIn(*vertices)) {
        vertices->dirty();
        geometry.dirtyBound();
    }
    const unsigned int setsBefore = geometry.getNumPrimitiveSets();
    checkIndices(geometry);
    checkLengths(geometry);
    if (renewGeometry(geometry))
        checkLengths(geometry);
    if (geometry.getNumPrimitiveSets() != setsBefore)
        OSG_WARN << "Left out " << setsBefore - geometry.getNumPrimitiveSets()
                 << " primitive sets that cannot be drawn." << std::endl;
}

} // namespace orbisk
