#include "readers/PlyFaces.h"

#include "readers/PlyVertices.h"
#include "readers/PolygonEars.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace orbisk {

namespace {

constexpr std::size_t triangleCorners = 3;
constexpr std::size_t quadCorners = 4;

/// What a number that names no row of any element becomes.
constexpr unsigned int nowhere = std::numeric_limits<unsigned int>::max();

std::optional<std::size_t> indexListOf(const PlyElement& element) {
    std::optional<std::size_t> place = element.find({"vertex_indices"});
    if (!place)
        place = element.find({"vertex_index"});
    if (place && !element.properties[*place].countType)
        place.reset();
    return place;
}

/// Turns rows into vertices and knows which are there.
class RowLookup {
public:
    explicit RowLookup(const PlyVertices& vertices)
        : m_vertexOfRow(vertices.vertexOfRow()), m_rows(vertices.rows()) {}

    /// Replaces the rows of a face by vertices; false where one isn't there.
    bool translate(unsigned int* corners, std::size_t count) const {
        return std::all_of(corners, corners + count, [this](unsigned int& corner) {
            if (corner >= m_rows)
                return false;
            if (!m_vertexOfRow.empty())
                corner = m_vertexOfRow[corner];
            return corner != PlyVertices::leftOut;
        });
    }

private:
    const std::vector<unsigned int>& m_vertexOfRow;
    std::size_t m_rows;
};

/// Translates faces of one size; gives the number of those that had to go.
std::size_t translateFaces(std::vector<unsigned int>& faces, std::size_t size,
                           const RowLookup& lookup) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < faces.size(); i += size) {
        if (!lookup.translate(&faces[i], size))
            continue;
        std::copy_n(&faces[i], size, &faces[kept]);
        kept += size;
    }
    const std::size_t dropped = (faces.size() - kept) / size;
    faces.resize(kept);
    return dropped;
}

osg::Vec3d positionOf(const osg::Array& positions, unsigned int vertex) {
    if (const auto* doubles = dynamic_cast<const osg::Vec3dArray*>(&positions))
        return (*doubles)[vertex];
    return static_cast<const osg::Vec3Array&>(positions)[vertex];
}

void addTriangles(const osg::Array& positions, const unsigned int* corners, std::size_t count,
                  std::vector<unsigned int>& triangles) {
    std::vector<osg::Vec3d> outline;
    outline.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        outline.push_back(positionOf(positions, corners[i]));
    for (const std::size_t place : cutIntoEars(outline))
        triangles.push_back(corners[place]);
}

} // namespace

bool PlyFaces::canTake(const PlyElement& element) {
    return indexListOf(element).has_value();
}

PlyFaces::PlyFaces(const PlyElement& element, Kind kind, bool inverted, std::size_t bytes)
    : m_property(*indexListOf(element)), m_kind(kind), m_inverted(inverted) {
    // Most meshes are of triangles. Memory that is not written to costs nothing.
    const std::size_t mostIndices = bytes / sizeOf(element.properties[m_property].type);
    const std::uint64_t mostRows = std::min<std::uint64_t>(element.rows, bytes);
    m_triangles.reserve(std::min<std::size_t>(mostRows * triangleCorners, mostIndices));
}

void PlyFaces::list(std::size_t property, const std::vector<double>& values) {
    if (property != m_property)
        return;
    m_row.resize(values.size());
    std::transform(values.begin(), values.end(), m_row.begin(), [](double value) {
        return value >= 0.0 && value < nowhere ? static_cast<unsigned int>(value) : nowhere;
    });
}

void PlyFaces::endRow() {
    if (m_kind == Kind::Strips)
        addStrip();
    else
        addFace(m_row.data(), m_row.size());
    m_row.clear();
}

/// A number below zero ends a strip, and the next one begins.
void PlyFaces::addStrip() {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < m_row.size(); ++i) {
        if (m_row[i] == nowhere) {
            begin = i + 1;
            continue;
        }
        if (i < begin + 2)
            continue;
        unsigned int corners[triangleCorners] = {m_row[i - 2], m_row[i - 1], m_row[i]};
        const bool isOdd = (i - begin) % 2 == 1;
        if (isOdd)
            std::swap(corners[0], corners[1]);
        const bool hasArea =
            corners[0] != corners[1] && corners[1] != corners[2] && corners[2] != corners[0];
        if (hasArea)
            addFace(corners, triangleCorners);
    }
}

void PlyFaces::addFace(const unsigned int* corners, std::size_t count) {
    if (count < triangleCorners)
        return;
    std::vector<unsigned int>& faces = count == triangleCorners ? m_triangles
                                       : count == quadCorners   ? m_quads
                                                                : m_polygons;
    if (count > quadCorners)
        m_polygonSizes.push_back(count);
    faces.insert(faces.end(), corners, corners + count);
    if (m_inverted)
        std::reverse(faces.end() - static_cast<std::ptrdiff_t>(count), faces.end());
}

PlyFaces::Indices PlyFaces::take(const PlyVertices& vertices) {
    const RowLookup lookup(vertices);
    Indices indices{std::move(m_triangles), std::move(m_quads), 0};
    indices.dropped = translateFaces(indices.triangles, triangleCorners, lookup) +
                      translateFaces(indices.quads, quadCorners, lookup);
    std::size_t begin = 0;
    for (const std::size_t size : m_polygonSizes) {
        if (lookup.translate(&m_polygons[begin], size))
            addTriangles(vertices.positions(), &m_polygons[begin], size, indices.triangles);
        else
            ++indices.dropped;
        begin += size;
    }
    m_polygons.clear();
    m_polygonSizes.clear();
    return indices;
}

} // namespace orbisk
