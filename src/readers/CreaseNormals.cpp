#include "readers/CreaseNormals.h"

#include <osg/Vec3>

#include <array>
#include <cmath>
#include <limits>

namespace orbisk {

namespace {

using Indices = std::vector<unsigned int>;

constexpr std::size_t corners = 3;

/// The cosine of the largest angle between a normal and the triangles that share it. Half of the
/// library's crease angle of 90 degrees, computed as it does.
const float mostDeviation = static_cast<float>(std::cos(osg::PI_2 * 0.5));

constexpr unsigned int notSplit = std::numeric_limits<unsigned int>::max();

/// Triangles without an area have no direction: their normal isn't of unit length, and may not even
/// be a number.
bool hasDirection(const osg::Vec3& normal) {
    constexpr float half = 0.5f;
    return normal * normal >= half;
}

template <class Vertices>
std::vector<osg::Vec3> faceNormals(const Vertices& vertices, const Indices& triangles) {
    std::vector<osg::Vec3> normals;
    normals.reserve(triangles.size() / corners);
    for (std::size_t i = 0; i + 2 < triangles.size(); i += corners) {
        const auto& first = vertices[triangles[i]];
        auto normal = (vertices[triangles[i + 1]] - first) ^ (vertices[triangles[i + 2]] - first);
        normal.normalize();
        // The square of a length may have been too large.
        normals.push_back(normal.valid() ? osg::Vec3(normal) : osg::Vec3());
    }
    return normals;
}

osg::ref_ptr<osg::Vec3Array> averages(const std::vector<osg::Vec3>& faces, const Indices& triangles,
                                      std::size_t vertexCount) {
    osg::ref_ptr<osg::Vec3Array> normals =
        new osg::Vec3Array(static_cast<unsigned int>(vertexCount));
    for (std::size_t i = 0; i < triangles.size(); ++i)
        (*normals)[triangles[i]] += faces[i / corners];
    for (osg::Vec3& normal : *normals)
        normal.normalize();
    return normals;
}

/// The vertices that can't have one normal for all their triangles, in the order in which they are
/// found, with the corners of those triangles.
struct SharpVertices {
    Indices vertices;
    std::vector<std::size_t> begins; ///< of each one's corners; one more marks the end of the last
    Indices cornersOf;               ///< places in the triangles' indices
};

SharpVertices findSharpVertices(const std::vector<osg::Vec3>& faces, const osg::Vec3Array& normals,
                                const Indices& triangles) {
    SharpVertices sharp;
    Indices placeOf(normals.size(), notSplit);
    for (std::size_t i = 0; i < triangles.size(); ++i) {
        unsigned int& place = placeOf[triangles[i]];
        if (place == notSplit && faces[i / corners] * normals[triangles[i]] < mostDeviation) {
            place = static_cast<unsigned int>(sharp.vertices.size());
            sharp.vertices.push_back(triangles[i]);
        }
    }
    sharp.begins.assign(sharp.vertices.size() + 1, 0);
    for (const unsigned int vertex : triangles)
        if (placeOf[vertex] != notSplit)
            ++sharp.begins[placeOf[vertex] + 1];
    for (std::size_t i = 1; i < sharp.begins.size(); ++i)
        sharp.begins[i] += sharp.begins[i - 1];
    sharp.cornersOf.resize(sharp.begins.back());
    std::vector<std::size_t> next = sharp.begins;
    for (std::size_t i = 0; i < triangles.size(); ++i)
        if (placeOf[triangles[i]] != notSplit)
            sharp.cornersOf[next[placeOf[triangles[i]]]++] = static_cast<unsigned int>(i);
    return sharp;
}

/// Gives groups of corners at one vertex copies of it.
class VertexSplitter {
public:
    VertexSplitter(const std::vector<osg::Vec3>& faces, Indices& triangles, std::size_t vertexCount,
                   Indices& copies)
        : m_faces(faces), m_triangles(triangles), m_vertexCount(vertexCount), m_copies(copies) {}

    void split(unsigned int vertex, const unsigned int* begin, const unsigned int* end) {
        constexpr std::ptrdiff_t fewCorners = 2;
        m_open.assign(begin, end);
        if (end - begin <= fewCorners) {
            for (std::size_t i = 1; i < m_open.size(); ++i)
                m_triangles[m_open[i]] = addCopy(vertex);
            return;
        }
        // The first that is left takes those along that look its way. Those without a direction are
        // alone without having to look at the others: there may be a million of them.
        std::size_t first = 0;
        while (first < m_open.size()) {
            const unsigned int copy = addCopy(vertex);
            const osg::Vec3 direction = normalAt(m_open[first]);
            m_triangles[m_open[first++]] = copy;
            if (hasDirection(direction))
                takeAlong(direction, copy, first);
        }
    }

private:
    const osg::Vec3& normalAt(unsigned int corner) const { return m_faces[corner / corners]; }

    unsigned int addCopy(unsigned int vertex) {
        m_copies.push_back(vertex);
        return static_cast<unsigned int>(m_vertexCount + m_copies.size() - 1);
    }

    void takeAlong(const osg::Vec3& direction, unsigned int copy, std::size_t first) {
        std::size_t kept = first;
        for (std::size_t i = first; i < m_open.size(); ++i) {
            if (direction * normalAt(m_open[i]) >= mostDeviation)
                m_triangles[m_open[i]] = copy;
            else
                m_open[kept++] = m_open[i];
        }
        m_open.resize(kept);
    }

    const std::vector<osg::Vec3>& m_faces;
    Indices& m_triangles;
    std::size_t m_vertexCount;
    Indices& m_copies;
    Indices m_open; ///< corners without a copy yet, from `first` on
};

} // namespace

template <class Vertices>
CreaseNormals makeCreaseNormals(const Vertices& vertices, std::vector<unsigned int>& triangles) {
    const std::vector<osg::Vec3> faces = faceNormals(vertices, triangles);
    CreaseNormals result{averages(faces, triangles, vertices.size()), {}};
    const SharpVertices sharp = findSharpVertices(faces, *result.normals, triangles);
    VertexSplitter splitter(faces, triangles, vertices.size(), result.copies);
    for (std::size_t i = 0; i < sharp.vertices.size(); ++i) {
        const unsigned int* begin = sharp.cornersOf.data() + sharp.begins[i];
        const unsigned int* end = sharp.cornersOf.data() + sharp.begins[i + 1];
        splitter.split(sharp.vertices[i], begin, end);
    }
    if (!result.copies.empty())
        result.normals = averages(faces, triangles, vertices.size() + result.copies.size());
    return result;
}

template CreaseNormals makeCreaseNormals(const osg::Vec3Array&, std::vector<unsigned int>&);
template CreaseNormals makeCreaseNormals(const osg::Vec3dArray&, std::vector<unsigned int>&);

} // namespace orbisk
