#pragma once

#include "measure/GeometryTriangles.h"

#include <osg/Geometry>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orbisk {

/// The triangles of all primitive sets of a geometry, numbered through. Finding the set of one is
/// for nothing where the one asked for before is of the same set.
class NumberedTriangles {
public:
    using Sets = osg::Geometry::PrimitiveSetList;

    /// Refers to both.
    /// @param firstNumbers is the number of each set's first triangle.
    NumberedTriangles(const Sets& sets, const std::vector<std::uint32_t>& firstNumbers)
        : m_sets(sets), m_firstNumbers(firstNumbers) {}

    /// The corners of one triangle, of a number that there is. Throws `std::out_of_range` as
    /// `PickTriangles` does.
    TriangleCorners corners(std::uint32_t number) {
        if (number - m_first >= m_count)
            takeSetOf(number);
        return m_set->corners(number - m_first);
    }

private:
    void takeSetOf(std::uint32_t number);

    const Sets& m_sets;
    const std::vector<std::uint32_t>& m_firstNumbers;
    std::optional<PickTriangles> m_set;
    std::uint32_t m_first = 0; ///< number of the set's first triangle
    std::size_t m_count = 0;   ///< of the set's triangles
};

} // namespace orbisk
