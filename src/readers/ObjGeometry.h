#pragma once

#include "readers/DistinctValues.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"
#include "readers/PolygonTessellator.h"

#include <osg/Geometry>
#include <osg/Vec2>
#include <osg/Vec3>
#include <osg/Vec3d>
#include <osg/Vec4>
#include <osg/ref_ptr>

#include <cstdint>
#include <vector>

namespace orbisk {

/// Makes geometries of the groups of one file, in the scene's coordinates: z up, unless the options
/// say otherwise. One object makes those of one file, on one thread.
class ObjGeometry {
public:
    /// @param file and @param options must outlive the object.
    ObjGeometry(const ObjFile& file, const ObjOptions& options);

    /// The geometry of elements of one group, in the order of the file: indexed triangles, lines
    /// and points, whose vertices are distinct. A group without normals gets smooth ones.
    /// @return null where none of the elements can be shown.
    osg::ref_ptr<osg::Geometry> make(const ObjGroup& group,
                                     const std::vector<const ObjElement*>& elements);

private:
    /// Values are the same that compare as equal, so that -0 and 0 are.
    struct SameVector {
        template <class Vector>
        static bool same(const Vector& a, const Vector& b) {
            return a == b;
        }
        template <class Vector>
        static std::uint64_t hash(const Vector& vector);
    };

    /// The values of a vertex, by their numbers among the distinct ones; 0 where it has none.
    struct Vertex {
        std::uint32_t position = 0;
        std::uint32_t colour = 0;
        std::uint32_t texture = 0;
        std::uint32_t normal = 0;
    };
    struct SameVertex {
        static bool same(const Vertex& a, const Vertex& b);
        static std::uint64_t hash(const Vertex& vertex);
    };

    /// What is made of a group, as numbers of its vertices.
    struct Mesh {
        DistinctValues<Vertex, SameVertex> vertices;
        std::vector<std::uint32_t> triangles;
        std::vector<std::uint32_t> lines; ///< two for each segment
        std::vector<std::uint32_t> points;
        bool hasNormals = false;
        bool hasTextures = false;
        bool isFlat = false; ///< its normals are made here, one for each face
    };

    template <class Value>
    using Distinct = DistinctValues<Value, SameVector>;

    osg::Vec3d inScene(const osg::Vec3d& inFile) const;
    osg::Vec3 inFile(const osg::Vec3& inScene) const;
    osg::Vec3 local(std::uint32_t position) const;
    void choosePrecision();
    void numberValues();

    const ObjCorner* cornersOf(const ObjElement& element) const;
    bool isUsable(const ObjElement& element) const;
    Vertex vertexOf(const ObjCorner& corner, const ObjGroup& group) const;
    osg::Vec3 windingNormal(const std::vector<Vertex>& face) const;
    bool facesAwayFromNormals(const std::vector<Vertex>& face) const;
    std::uint32_t numberOf(const Vertex& vertex, Mesh& mesh);
    void forgetVertices(const std::vector<Vertex>& vertices);
    void setFlatNormal(std::vector<Vertex>& face);
    void addFace(std::vector<Vertex> face, Mesh& mesh);
    void addPolygon(const std::vector<Vertex>& face, const std::vector<osg::Vec3>& outline,
                    Mesh& mesh);
    osg::ref_ptr<osg::Geometry> polygonOf(const std::vector<Vertex>& face,
                                          const std::vector<osg::Vec3>& outline,
                                          const Mesh& mesh) const;
    Vertex addedVertex(const osg::Geometry& polygon, unsigned int index);
    void addElement(const ObjElement& element, const ObjGroup& group, Mesh& mesh);

    static std::vector<Vertex> renumber(Mesh& mesh);
    osg::ref_ptr<osg::Array> positionsOf(const std::vector<Vertex>& vertices) const;
    void setAttributes(const Mesh& mesh, const std::vector<Vertex>& vertices,
                       osg::Geometry& geometry) const;
    osg::ref_ptr<osg::Vec3Array> smoothNormals(const Mesh& mesh,
                                               const std::vector<Vertex>& vertices);

    const ObjFile& m_file;
    const ObjOptions& m_options;
    bool m_isDouble = false;
    osg::Vec3d m_base; ///< of local positions: floats, good for shapes but not for places

    Distinct<osg::Vec3d> m_positions; ///< in the scene; floats where these are exact enough
    Distinct<osg::Vec4> m_colours;
    Distinct<osg::Vec2> m_textures;
    Distinct<osg::Vec3> m_normals;
    std::vector<std::uint32_t> m_positionNumbers; ///< of the file's positions, and so on
    std::vector<std::uint32_t> m_colourNumbers;
    std::vector<std::uint32_t> m_textureNumbers;
    std::vector<std::uint32_t> m_normalNumbers;

    PolygonTessellator m_tessellator;
    std::vector<std::uint32_t> m_vertexAtPosition; ///< of the mesh in the making; none between two
};

} // namespace orbisk
