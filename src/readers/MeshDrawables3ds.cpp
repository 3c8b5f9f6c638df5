#include "readers/MeshDrawables3ds.h"

#include <osg/Geometry>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace orbisk {

namespace {

/// A cross product shorter than this says nothing about a direction.
constexpr double leastNormal = 1e-5;

/// Normals whose difference has a square below this are one.
constexpr double sameNormal = 1e-6;

constexpr int none = -1;

bool isFinite(const osg::Vec3& vector) {
    return std::isfinite(vector.x()) && std::isfinite(vector.y()) && std::isfinite(vector.z());
}

/// The axis that a face without a direction of its own is given.
osg::Vec3 largestAxis(const osg::Vec3& vector) {
    if (vector.x() >= vector.y() && vector.x() >= vector.z())
        return osg::X_AXIS;
    return vector.y() >= vector.z() ? osg::Y_AXIS : osg::Z_AXIS;
}

osg::Vec3 faceNormal(const osg::Vec3& a, const osg::Vec3& b, const osg::Vec3& c) {
    osg::Vec3 normal = (c - b) ^ (a - b);
    const auto length = static_cast<float>(std::sqrt(static_cast<double>(normal.length2())));
    if (!std::isfinite(length) || std::abs(static_cast<double>(length)) < leastNormal)
        normal = largestAxis(normal);
    else
        normal *= 1.0f / length;
    normal.normalize();
    return normal;
}

/// Which faces go into one geometry: those of one material and one group.
struct Batch {
    std::optional<std::size_t> material;
    std::uint32_t smoothingGroup;

    /// Those without a material come first.
    bool operator<(const Batch& other) const {
        return std::tie(material, smoothingGroup) < std::tie(other.material, other.smoothingGroup);
    }
};

using Corners = std::array<unsigned int, 3>;

/// The faces of a mesh by what goes into one geometry.
std::map<Batch, std::vector<std::size_t>> batchesOf(const Mesh3ds& mesh) {
    std::map<Batch, std::vector<std::size_t>> batches;
    for (std::size_t i = 0; i < mesh.faces.size(); ++i)
        batches[{mesh.faces[i].material, mesh.faces[i].smoothingGroup}].push_back(i);
    return batches;
}

/// Builds the geometries of one mesh.
class GeometryBuilder {
public:
    explicit GeometryBuilder(const Mesh3ds& mesh)
        : m_mesh(mesh), m_vertexOf(mesh.vertices.size(), none) {}

    /// @param smoothed whether faces share the normals of their vertices.
    /// @param map the picture that texture coordinates are for.
    osg::ref_ptr<osg::Geometry> build(const std::vector<std::size_t>& faces, bool smoothed,
                                      const TextureMap3ds& map) {
        begin(map);
        std::vector<Corners> triangles;
        for (const std::size_t face : faces)
            if (isDrawable(m_mesh.faces[face]))
                triangles.push_back(addFace(m_mesh.faces[face], smoothed));
        // So that the next geometry costs what it has faces, and not what the mesh has vertices.
        for (const std::size_t original : m_used)
            m_vertexOf[original] = none;
        return finish(triangles);
    }

private:
    void begin(const TextureMap3ds& map) {
        m_vertices = new osg::Vec3Array;
        m_normals = new osg::Vec3Array;
        m_textureCoordinates = m_mesh.textureCoordinates.empty() ? nullptr : new osg::Vec2Array;
        m_lastSplit.clear();
        m_used.clear();
        m_scale = map.name.empty() ? osg::Vec2(1.0f, 1.0f) : map.scale;
        m_offset = map.name.empty() ? osg::Vec2() : map.offset;
    }

    bool isDrawable(const Face3ds& face) const {
        for (const std::uint16_t corner : face.corners)
            if (corner >= m_mesh.vertices.size() || !isFinite(m_mesh.vertices[corner]))
                return false;
        return true;
    }

    Corners addFace(const Face3ds& face, bool smoothed) {
        const auto& [a, b, c] = face.corners;
        const osg::Vec3 normal =
            faceNormal(m_mesh.vertices[a], m_mesh.vertices[b], m_mesh.vertices[c]);
        return {addCorner(a, normal, smoothed), addCorner(b, normal, smoothed),
                addCorner(c, normal, smoothed)};
    }

    unsigned int addCorner(std::size_t original, const osg::Vec3& normal, bool smoothed) {
        const int first = m_vertexOf[original];
        if (first == none) {
            const unsigned int vertex = addVertex(original, normal);
            m_vertexOf[original] = static_cast<int>(vertex);
            m_used.push_back(original);
            return vertex;
        }
        const auto shared = static_cast<unsigned int>(first);
        if (smoothed) {
            osg::Vec3& average = (*m_normals)[shared];
            average += normal;
            average.normalize();
            return shared;
        }
        // Of the vertices that stand in one place, only the first and the last are looked at.
        for (int vertex = first; vertex != none;
             vertex = m_lastSplit[static_cast<std::size_t>(vertex)])
            if (static_cast<double>(
                    (normal - (*m_normals)[static_cast<unsigned int>(vertex)]).length2()) <
                sameNormal)
                return static_cast<unsigned int>(vertex);
        const unsigned int split = addVertex(original, normal);
        m_lastSplit[shared] = static_cast<int>(split);
        return split;
    }

    unsigned int addVertex(std::size_t original, const osg::Vec3& normal) {
        m_vertices->push_back(m_mesh.vertices[original]);
        m_normals->push_back(normal);
        m_lastSplit.push_back(none);
        if (m_textureCoordinates) {
            const osg::Vec2 coordinates =
                osg::componentMultiply(m_mesh.textureCoordinates[original], m_scale) + m_offset;
            const bool isFinite = std::isfinite(coordinates.x()) && std::isfinite(coordinates.y());
            m_textureCoordinates->push_back(isFinite ? coordinates : osg::Vec2());
        }
        return static_cast<unsigned int>(m_vertices->size() - 1);
    }

    osg::ref_ptr<osg::Geometry> finish(const std::vector<Corners>& triangles) const {
        osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
        geometry->setVertexArray(m_vertices);
        geometry->setNormalArray(m_normals, osg::Array::BIND_PER_VERTEX);
        if (m_textureCoordinates)
            geometry->setTexCoordArray(0, m_textureCoordinates);
        const osg::ref_ptr<osg::Vec4ubArray> white = new osg::Vec4ubArray;
        constexpr unsigned char full = 255;
        white->push_back(osg::Vec4ub(full, full, full, full));
        geometry->setColorArray(white, osg::Array::BIND_OVERALL);
        osg::ref_ptr<osg::DrawElements> elements;
        constexpr GLenum mode = osg::PrimitiveSet::TRIANGLES;
        if (m_vertices->size() <= std::numeric_limits<std::uint16_t>::max())
            elements = new osg::DrawElementsUShort(mode);
        else
            elements = new osg::DrawElementsUInt(mode);
        elements->reserveElements(static_cast<unsigned int>(3 * triangles.size()));
        for (const Corners& triangle : triangles)
            for (const unsigned int corner : triangle)
                elements->addElement(corner);
        geometry->addPrimitiveSet(elements);
        return geometry;
    }

    const Mesh3ds& m_mesh;
    std::vector<int> m_vertexOf;     ///< the first vertex in a place, for each of the mesh
    std::vector<std::size_t> m_used; ///< those of the mesh that have one
    std::vector<int> m_lastSplit;    ///< of the first one, the last one in the same place
    osg::ref_ptr<osg::Vec3Array> m_vertices;
    osg::ref_ptr<osg::Vec3Array> m_normals;
    osg::ref_ptr<osg::Vec2Array> m_textureCoordinates;
    osg::Vec2 m_scale;
    osg::Vec2 m_offset;
};

} // namespace

std::size_t countGeometries3ds(const Mesh3ds& mesh) {
    return batchesOf(mesh).size();
}

osg::ref_ptr<osg::Geode> makeGeode3ds(const Mesh3ds& mesh,
                                      const std::vector<Material3ds>& materials,
                                      const std::vector<osg::ref_ptr<osg::StateSet>>& stateSets) {
    if (materials.empty() && mesh.faces.empty())
        return nullptr;
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->setName(mesh.name);
    GeometryBuilder builder(mesh);
    const TextureMap3ds noMap;
    for (const auto& [batch, faces] : batchesOf(mesh)) {
        const bool smoothed = batch.smoothingGroup != 0;
        const TextureMap3ds& map = batch.material ? materials[*batch.material].texture : noMap;
        const osg::ref_ptr<osg::Geometry> geometry = builder.build(faces, smoothed, map);
        if (batch.material)
            geometry->setStateSet(stateSets[*batch.material]);
        geode->addDrawable(geometry);
    }
    return geode;
}

} // namespace orbisk
