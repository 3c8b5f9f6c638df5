#include "readers/FacetMesh.h"

#include <osg/PrimitiveSet>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace orbisk {

namespace {

constexpr unsigned int freeSlot = std::numeric_limits<unsigned int>::max();

/// Above this share of used slots, finding one takes long.
constexpr double mostFilled = 0.75;
constexpr std::size_t leastSlots = 64;

/// With fewer vertices than this, two bytes are enough for an index.
constexpr std::size_t leastForWideIndices = 65536;

bool isFinite(const osg::Vec3& vector) {
    return std::isfinite(vector.x()) && std::isfinite(vector.y()) && std::isfinite(vector.z());
}

std::uint64_t mixed(std::uint64_t hash, float number) {
    // The two zeros are equal, but not in their bytes.
    const float canonical = number + 0.0f;
    std::uint32_t bits;
    static_assert(sizeof bits == sizeof canonical);
    std::memcpy(&bits, &canonical, sizeof bits);
    // An odd multiplier loses nothing, and brings what differs up into the high bits.
    constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15;
    constexpr int halfOfBits = 32;
    hash = (hash ^ bits) * multiplier;
    return hash ^ (hash >> halfOfBits);
}

} // namespace

FacetMesh::FacetMesh(bool coloured, std::size_t facets)
    : m_coloured(coloured), m_places(new osg::Vec3Array), m_normals(new osg::Vec3Array),
      m_colours(new osg::Vec4Array) {
    const std::size_t corners = 3 * facets;
    // What is never written to takes up no memory.
    m_indices.reserve(corners);
    m_places->reserve(corners);
    m_normals->reserve(corners);
    if (coloured)
        m_colours->reserve(corners);
    makeTable(corners);
}

void FacetMesh::makeTable(std::size_t vertices) {
    std::size_t slots = leastSlots;
    while (static_cast<double>(slots) * mostFilled < static_cast<double>(vertices))
        slots *= 2;
    m_table.assign(slots, freeSlot);
    for (unsigned int vertex = 0; vertex < m_places->size(); ++vertex) {
        std::size_t slot = hashOf((*m_places)[vertex], (*m_normals)[vertex]);
        while (m_table[slot] != freeSlot)
            slot = (slot + 1) & (m_table.size() - 1);
        m_table[slot] = vertex;
    }
}

void FacetMesh::add(const Facet& facet) {
    const auto& [a, b, c] = facet.corners;
    if (!isFinite(a) || !isFinite(b) || !isFinite(c) || a == b || b == c || c == a)
        return;
    if (!isFinite(facet.normal)) {
        add({facet.corners, osg::Vec3(), facet.colour});
        return;
    }
    for (const osg::Vec3& corner : facet.corners)
        m_indices.push_back(vertexOf(corner, facet));
}

unsigned int FacetMesh::vertexOf(const osg::Vec3& place, const Facet& facet) {
    std::size_t slot = hashOf(place, facet.normal);
    for (; m_table[slot] != freeSlot; slot = (slot + 1) & (m_table.size() - 1))
        if (isVertex(m_table[slot], place, facet))
            return m_table[slot];
    const auto vertex = static_cast<unsigned int>(m_places->size());
    m_table[slot] = vertex;
    m_places->push_back(place);
    m_normals->push_back(facet.normal);
    if (m_coloured)
        m_colours->push_back(facet.colour);
    if (static_cast<double>(m_places->size()) > mostFilled * static_cast<double>(m_table.size()))
        makeTable(2 * m_places->size());
    return vertex;
}

std::size_t FacetMesh::hashOf(const osg::Vec3& place, const osg::Vec3& normal) const {
    std::uint64_t hash = 0;
    for (const osg::Vec3* vector : {&place, &normal})
        for (int i = 0; i < 3; ++i)
            hash = mixed(hash, (*vector)[i]);
    return static_cast<std::size_t>(hash) & (m_table.size() - 1);
}

bool FacetMesh::isVertex(unsigned int vertex, const osg::Vec3& place, const Facet& facet) const {
    return (*m_places)[vertex] == place && (*m_normals)[vertex] == facet.normal &&
           (!m_coloured || (*m_colours)[vertex] == facet.colour);
}

osg::ref_ptr<osg::Geometry> FacetMesh::takeGeometry() {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(m_places);
    geometry->setNormalArray(m_normals, osg::Array::BIND_PER_VERTEX);
    if (m_coloured)
        geometry->setColorArray(m_colours, osg::Array::BIND_PER_VERTEX);
    constexpr GLenum mode = osg::PrimitiveSet::TRIANGLES;
    if (m_places->size() < leastForWideIndices)
        geometry->addPrimitiveSet(
            new osg::DrawElementsUShort(mode, m_indices.begin(), m_indices.end()));
    else
        geometry->addPrimitiveSet(
            new osg::DrawElementsUInt(mode, m_indices.begin(), m_indices.end()));
    *this = FacetMesh(m_coloured);
    return geometry;
}

} // namespace orbisk
