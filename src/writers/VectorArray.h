#pragma once

#include <osg/Array>
#include <osg/Vec3d>

namespace orbisk {

/// An array of vectors of two, three or four numbers of any kind, read as doubles in space. Refers
/// to the array.
class VectorArray {
public:
    /// @param array may be null: nothing can be read then.
    explicit VectorArray(const osg::Array* array);

    /// How many vectors can be read: none where the array is of another kind.
    unsigned int size() const { return m_size; }

    /// A third number that is missing is 0, a fourth is divided by.
    /// @param index below `size`.
    osg::Vec3d at(unsigned int index) const;

    /// Whether its numbers are no finer than a `float`.
    bool single() const;

private:
    const osg::Array* m_array;
    unsigned int m_size;
};

} // namespace orbisk
