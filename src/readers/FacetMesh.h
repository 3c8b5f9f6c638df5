#pragma once

#include <osg/Array>
#include <osg/Geometry>
#include <osg/Vec3>
#include <osg/Vec4>
#include <osg/ref_ptr>

#include <array>
#include <cstddef>
#include <vector>

namespace orbisk {

/// Builds an indexed mesh of facets that come one by one, each with corners of its own. Corners
/// that are the same in place, normal and colour become one vertex.
class FacetMesh {
public:
    /// @param coloured whether facets have a colour; then all of them do.
    /// @param facets how many will come, more or less.
    explicit FacetMesh(bool coloured = false, std::size_t facets = 0);

    struct Facet {
        std::array<osg::Vec3, 3> corners;
        osg::Vec3 normal; ///< one that isn't finite becomes zero
        osg::Vec4 colour; ///< red, green, blue, alpha
    };

    /// Adds a facet at the end, unless a corner isn't finite or two are in one place.
    void add(const Facet& facet);

    bool isEmpty() const { return m_indices.empty(); }

    /// The mesh, which is empty afterwards.
    osg::ref_ptr<osg::Geometry> takeGeometry();

private:
    unsigned int vertexOf(const osg::Vec3& place, const Facet& facet);
    std::size_t hashOf(const osg::Vec3& place, const osg::Vec3& normal) const;
    bool isVertex(unsigned int vertex, const osg::Vec3& place, const Facet& facet) const;
    void makeTable(std::size_t vertices);

    bool m_coloured;
    osg::ref_ptr<osg::Vec3Array> m_places;
    osg::ref_ptr<osg::Vec3Array> m_normals;
    osg::ref_ptr<osg::Vec4Array> m_colours;
    std::vector<unsigned int> m_indices;
    std::vector<unsigned int> m_table; ///< vertices by their hash; as long as a power of two
};

} // namespace orbisk
