#pragma once

#include "measure/TriangleTest.h"

#include <osg/Array>
#include <osg/GL>
#include <osg/Matrixd>
#include <osg/PrimitiveSet>
#include <osg/Vec3d>

#include <array>
#include <cstddef>

namespace orbisk {

/// Indices into the vertex array.
using TriangleCorners = std::array<std::size_t, 3>;

/// The triangles of a primitive set that can be picked: those of triangle lists, strips and fans
/// that are drawn with `DrawArrays` or with `DrawElements` of any width. All else has none. Refers
/// to the set.
class PickTriangles {
public:
    explicit PickTriangles(const osg::PrimitiveSet& set);

    /// How many there are. A list's incomplete last triangle counts.
    std::size_t count() const { return m_count; }

    /// The corners of one triangle, in the order of the library's own decomposition (which turns
    /// every second triangle of a strip). Throws `std::out_of_range` where the set has not that
    /// many indices.
    /// @param number below `count`.
    TriangleCorners corners(std::size_t number) const;

private:
    std::size_t indexAt(std::size_t position) const;

    osg::PrimitiveSet::Type m_type;
    GLenum m_mode;
    const void* m_indices = nullptr; ///< null where vertices are drawn one after the other
    unsigned int m_first = 0;        ///< of these
    std::size_t m_indexCount = 0;
    std::size_t m_count = 0;
};

/// The vertices of a geometry as picking takes them: those of a double array as they stand, those
/// of a float array transformed by the matrix in force, each coordinate rounded to a float; the
/// identity leaves them as they are. Refers to the array and the matrix and reads them when asked.
class PickVertices {
public:
    /// @param array may be null: there are no vertices then.
    PickVertices(const osg::Array* array, const osg::Matrixd& matrix);

    /// Whether the array is of a type that can be picked.
    bool exist() const { return m_floats || m_doubles; }

    std::size_t size() const;

    /// Throws `std::out_of_range` beyond the array.
    osg::Vec3d at(std::size_t index) const;

    /// Has the processor fetch a vertex that is soon asked for, if there is one.
    void fetch(std::size_t index) const;

    /// Throws `std::out_of_range` where a corner is beyond the array.
    Triangle triangle(const TriangleCorners& corners) const {
        return {at(corners[0]), at(corners[1]), at(corners[2])};
    }

private:
    const osg::Vec3Array* m_floats;
    const osg::Vec3dArray* m_doubles;
    const osg::Matrixd& m_matrix;
    bool m_isIdentity;
};

} // namespace orbisk
