#pragma once

#include "measure/GeometryTriangles.h"
#include "measure/NumberedTriangles.h"
#include "measure/TriangleTree.h"

#include <osg/Array>
#include <osg/Geometry>
#include <osg/Matrixd>
#include <osg/PrimitiveSet>
#include <osg/observer_ptr>
#include <osg/ref_ptr>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orbisk {

/// What a geometry's index is built of. It keeps the arrays alive, not the geometry, so that
/// another thread can read them while the geometry goes.
struct GeometrySource {
    GeometrySource(const osg::Geometry& geometry, const osg::Matrixd& matrix);

    osg::ref_ptr<const osg::Array> vertices;
    std::vector<osg::ref_ptr<const osg::PrimitiveSet>> sets;
    osg::Matrixd matrix; ///< in force over the geometry
};

/// Recognises whether a geometry still has the vertices and primitives it had. Keeps nothing alive.
/// Main thread.
class GeometryMark {
public:
    explicit GeometryMark(const osg::Geometry& geometry);

    /// Whether `geometry` is the one that was marked, and has the same arrays, of the same sizes,
    /// and none of them was said to have changed.
    bool matches(const osg::Geometry& geometry) const;

    /// Whether the marked geometry still exists.
    bool exists() const { return m_geometry.valid(); }

private:
    struct SetMark {
        explicit SetMark(const osg::PrimitiveSet& marked);
        bool matches(const osg::PrimitiveSet& other) const;

        osg::observer_ptr<const osg::PrimitiveSet> set;
        unsigned int modifiedCount;
        unsigned int indexCount;
        int first;
        GLenum mode;
    };

    osg::observer_ptr<const osg::Geometry> m_geometry;
    osg::observer_ptr<const osg::Array> m_vertices;
    unsigned int m_vertexCount = 0;
    unsigned int m_modifiedCount = 0;
    std::vector<SetMark> m_sets;
};

/// The triangle tree of one geometry under one matrix. Its triangles are numbered through all
/// primitive sets in their order. Immutable.
class GeometryIndex {
public:
    /// @return nothing if it was cancelled, if picking the geometry throws, or if an index would be
    /// no use.
    static std::optional<GeometryIndex> build(const GeometrySource& source,
                                              const std::atomic<bool>& cancelled);

    const TriangleTree& tree() const { return m_tree; }

    /// The triangles of `geometry`, which must be the one the index was built for, by the numbers
    /// that the tree has for them. Refers to both.
    NumberedTriangles triangles(const osg::Geometry& geometry) const;

private:
    GeometryIndex() = default;

    TriangleTree m_tree;
    std::vector<std::uint32_t> m_firstNumbers; ///< of each primitive set
};

} // namespace orbisk
