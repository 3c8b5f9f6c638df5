#include "measure/GeometryIndex.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace orbisk {

namespace {

/// The triangles of primitive sets, one after the other. Refers to the sets.
class SetWalk {
public:
    using Sets = std::vector<osg::ref_ptr<const osg::PrimitiveSet>>;

    explicit SetWalk(const Sets& sets) : m_next(sets.begin()) {}

    /// The corners of the next triangle, which there must be.
    TriangleCorners next() {
        while (!m_triangles || m_number == m_triangles->count()) {
            m_triangles.emplace(**m_next++);
            m_number = 0;
        }
        return m_triangles->corners(m_number++);
    }

private:
    Sets::const_iterator m_next;
    std::optional<PickTriangles> m_triangles;
    std::size_t m_number = 0;
};

unsigned int sizeOf(const osg::Array* array) {
    return array ? array->getNumElements() : 0;
}

unsigned int modifiedCountOf(const osg::Array* array) {
    return array ? array->getModifiedCount() : 0;
}

int firstOf(const osg::PrimitiveSet& set) {
    return set.getType() == osg::PrimitiveSet::DrawArraysPrimitiveType
               ? static_cast<const osg::DrawArrays&>(set).getFirst()
               : 0;
}

} // namespace

GeometrySource::GeometrySource(const osg::Geometry& geometry, const osg::Matrixd& inForce)
    : vertices(geometry.getVertexArray()),
      sets(geometry.getPrimitiveSetList().begin(), geometry.getPrimitiveSetList().end()),
      matrix(inForce) {}

GeometryMark::SetMark::SetMark(const osg::PrimitiveSet& marked)
    : set(&marked), modifiedCount(marked.getModifiedCount()), indexCount(marked.getNumIndices()),
      first(firstOf(marked)), mode(marked.getMode()) {}

bool GeometryMark::SetMark::matches(const osg::PrimitiveSet& other) const {
    return set.get() == &other && other.getModifiedCount() == modifiedCount &&
           other.getNumIndices() == indexCount && other.getMode() == mode &&
           firstOf(other) == first;
}

GeometryMark::GeometryMark(const osg::Geometry& geometry)
    : m_geometry(&geometry), m_vertices(geometry.getVertexArray()),
      m_vertexCount(sizeOf(geometry.getVertexArray())),
      m_modifiedCount(modifiedCountOf(geometry.getVertexArray())) {
    m_sets.reserve(geometry.getNumPrimitiveSets());
    for (const auto& set : geometry.getPrimitiveSetList())
        m_sets.emplace_back(*set);
}

bool GeometryMark::matches(const osg::Geometry& geometry) const {
    const osg::Array* vertices = geometry.getVertexArray();
    const auto& sets = geometry.getPrimitiveSetList();
    return m_geometry.get() == &geometry && m_vertices.get() == vertices &&
           sizeOf(vertices) == m_vertexCount && modifiedCountOf(vertices) == m_modifiedCount &&
           std::equal(m_sets.begin(), m_sets.end(), sets.begin(), sets.end(),
                      [](const SetMark& mark, const auto& set) { return mark.matches(*set); });
}

std::optional<GeometryIndex> GeometryIndex::build(const GeometrySource& source,
                                                  const std::atomic<bool>& cancelled) try {
    GeometryIndex index;
    std::size_t count = 0;
    for (const auto& set : source.sets) {
        index.m_firstNumbers.push_back(static_cast<std::uint32_t>(count));
        count += PickTriangles(*set).count();
        if (count > std::numeric_limits<std::uint32_t>::max())
            return std::nullopt;
    }
    const PickVertices vertices(source.vertices.get(), source.matrix);
    SetWalk walk(source.sets);
    const auto triangle = [&](std::uint32_t) { return vertices.triangle(walk.next()); };
    std::optional<TriangleTree> tree =
        TriangleTree::build(static_cast<std::uint32_t>(count), triangle, cancelled);
    if (!tree)
        return std::nullopt;
    index.m_tree = std::move(*tree);
    return index;
} catch (const std::out_of_range&) {
    // The walk throws it to who picks.
    return std::nullopt;
} catch (const std::bad_alloc&) {
    return std::nullopt;
}

NumberedTriangles GeometryIndex::triangles(const osg::Geometry& geometry) const {
    return {geometry.getPrimitiveSetList(), m_firstNumbers};
}

} // namespace orbisk
