#pragma once

#include <osg/Array>
#include <osg/Geometry>

#include <cstddef>
#include <cstdint>

namespace orbisk {

/// The number by which the library still tells an array of one element for each primitive (each
/// point, line, triangle or quadrangle; a strip, fan or polygon is one).
inline constexpr auto bindPerPrimitive = static_cast<osg::Array::Binding>(3);

/// How many elements an array has once the indices are followed that files of old have beside it.
std::size_t elementCount(const osg::Array& array);

/// Whether the array has indices of the old kind, and one of them leads beyond it.
bool hasWrongIndices(const osg::Array& array);

/// How many primitives, in the meaning of `bindPerPrimitive`, the sets of a geometry have.
/// No length or count of theirs may be negative.
std::uint64_t primitiveCount(const osg::Geometry& geometry);

/// Turns indices of arrays and elements for primitives, which the library draws no more, into
/// arrays of one element for each vertex. Where that would take far too much, elements for
/// primitives are left out.
///
/// The library does the same when it makes a model faster to draw, but follows all numbers: before
/// this they must have been checked, and have to be again afterwards.
/// @return whether there was anything to do.
bool renewGeometry(osg::Geometry& geometry);

/// Replaces the arrays beside the vertices by what `change(array)` makes of them: an array, which
/// may be the same, or null.
template <typename Change>
void changeCompanions(osg::Geometry& geometry, const Change& change) {
    const auto changed = [&](osg::Array* array, const auto& set) {
        osg::Array* const latter = array ? change(array) : nullptr;
        if (latter != array)
            set(latter);
    };
    changed(geometry.getNormalArray(), [&](osg::Array* array) { geometry.setNormalArray(array); });
    changed(geometry.getColorArray(), [&](osg::Array* array) { geometry.setColorArray(array); });
    changed(geometry.getSecondaryColorArray(),
            [&](osg::Array* array) { geometry.setSecondaryColorArray(array); });
    changed(geometry.getFogCoordArray(),
            [&](osg::Array* array) { geometry.setFogCoordArray(array); });
    for (unsigned int unit = 0; unit < geometry.getNumTexCoordArrays(); ++unit)
        changed(geometry.getTexCoordArray(unit),
                [&](osg::Array* array) { geometry.setTexCoordArray(unit, array); });
    for (unsigned int index = 0; index < geometry.getNumVertexAttribArrays(); ++index)
        changed(geometry.getVertexAttribArray(index),
                [&](osg::Array* array) { geometry.setVertexAttribArray(index, array); });
}

} // namespace orbisk
