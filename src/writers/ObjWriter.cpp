#include "writers/ObjWriter.h"

#include "writers/NumberWriting.h"
#include "writers/ObjMaterials.h"
#include "writers/PlacedGeometryVisitor.h"
#include "writers/PrimitiveWalk.h"
#include "writers/VectorArray.h"

#include <osg/BoundingBox>
#include <osg/Geometry>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace orbisk {

namespace {

/// Longer polygons are taken apart: readers have lines of limited length.
constexpr std::size_t mostCorners = 64;
constexpr std::size_t flushedBytes = 1 << 16;
constexpr const char* nameForUnnamed = "part";

/// y up, from z up.
osg::Vec3d turned(const osg::Vec3d& v) {
    return {v.x(), v.z(), -v.y()};
}

bool white(const osg::Vec4& colour) {
    return colour == osg::Vec4(1.0f, 1.0f, 1.0f, 1.0f);
}

/// Whether the short texts of numbers in single precision are good for these vertices. Such a text
/// stands for the number to whoever rounds it back. A reader that keeps more digits takes it as it
/// is, and the farther from the origin, the farther that is from the vertex.
bool shortTextsSuffice(const VectorArray& vertices) {
    constexpr double singleRounding = 1.0 / (1 << 24);
    constexpr double tolerance = 1e-7;
    osg::BoundingBoxd box;
    for (unsigned int i = 0; i < vertices.size(); ++i)
        box.expandBy(vertices.at(i));
    double farthest = 0.0;
    for (int axis = 0; axis < 3; ++axis)
        farthest = std::max({farthest, std::fabs(box._min[axis]), std::fabs(box._max[axis])});
    return farthest * singleRounding <= tolerance * 2.0 * box.radius();
}

/// The colours of a geometry's vertices.
class VertexColours {
public:
    explicit VertexColours(const osg::Geometry& geometry) {
        const osg::Array* array = geometry.getColorArray();
        m_floats = dynamic_cast<const osg::Vec4Array*>(array);
        m_bytes = dynamic_cast<const osg::Vec4ubArray*>(array);
        m_binding = osg::getBinding(array);
        m_size = m_floats || m_bytes ? array->getNumElements() : 0;
    }

    /// White where the vertex has none of its own.
    osg::Vec4 at(unsigned int vertex) const {
        const unsigned int index = m_binding == osg::Array::BIND_OVERALL ? 0 : vertex;
        const bool bound =
            m_binding == osg::Array::BIND_OVERALL || m_binding == osg::Array::BIND_PER_VERTEX;
        if (!bound || index >= m_size)
            return {1.0f, 1.0f, 1.0f, 1.0f};
        if (m_floats)
            return (*m_floats)[index];
        constexpr float most = 255.0f;
        const osg::Vec4ub bytes = (*m_bytes)[index];
        return osg::Vec4(bytes.r(), bytes.g(), bytes.b(), bytes.a()) / most;
    }

    /// Whether all vertices are white.
    bool plain() const {
        for (unsigned int i = 0; i < m_size; ++i)
            if (!white(at(i)))
                return false;
        return true;
    }

private:
    const osg::Vec4Array* m_floats;
    const osg::Vec4ubArray* m_bytes;
    osg::Array::Binding m_binding;
    unsigned int m_size;
};

/// Tells whether any vertex of a model has a colour: a file gives one to all its vertices or to
/// none.
class ColourSearch : public PlacedGeometryVisitor {
public:
    bool found = false;

protected:
    void visit(osg::Geometry& geometry, const osg::Matrixd&) override {
        found = found || !VertexColours(geometry).plain();
    }
};

/// How many of each a file has so far.
struct ObjCounts {
    std::size_t vertices = 0;
    std::size_t textureCoordinates = 0;
    std::size_t normals = 0;
};

/// What stands beside each vertex of a geometry.
enum class NormalBinding { None, PerVertex, Overall };

NormalBinding normalBinding(const osg::Geometry& geometry, unsigned int vertices) {
    const VectorArray normals(geometry.getNormalArray());
    switch (osg::getBinding(geometry.getNormalArray())) {
    case osg::Array::BIND_PER_VERTEX:
        return normals.size() >= vertices ? NormalBinding::PerVertex : NormalBinding::None;
    case osg::Array::BIND_OVERALL:
        return normals.size() > 0 ? NormalBinding::Overall : NormalBinding::None;
    default:
        return NormalBinding::None;
    }
}

/// Writes points, lines and faces by the numbers that their vertices have in the file.
class ElementWriter : public PrimitiveWalk {
public:
    ElementWriter(std::string& out, const ObjCounts& before, unsigned int vertices, bool textured,
                  NormalBinding normals)
        : m_out(out), m_before(before), m_vertices(vertices), m_textured(textured),
          m_normals(normals) {}

protected:
    void point(unsigned int index) override { write("p", &index, 1); }

    void line(unsigned int from, unsigned int to) override {
        const unsigned int ends[] = {from, to};
        write("l", ends, 2);
    }

    void face(const unsigned int* corners, std::size_t count) override {
        if (count <= mostCorners) {
            write("f", corners, count);
            return;
        }
        for (std::size_t i = 2; i < count; ++i) {
            const unsigned int triangle[] = {corners[0], corners[i - 1], corners[i]};
            write("f", triangle, 3);
        }
    }

private:
    void write(const char* key, const unsigned int* indices, std::size_t count) {
        if (std::any_of(indices, indices + count,
                        [this](unsigned int index) { return index >= m_vertices; }))
            return;
        m_out += key;
        for (std::size_t i = 0; i < count; ++i)
            writeIndex(indices[i], *key == 'f');
        m_out += '\n';
    }

    void writeIndex(unsigned int index, bool withNormal) {
        const bool normal = withNormal && m_normals != NormalBinding::None;
        const std::size_t number = std::size_t{index} + 1;
        appendNumber(m_out += ' ', m_before.vertices + number);
        if (m_textured)
            appendNumber(m_out += '/', m_before.textureCoordinates + number);
        if (!normal)
            return;
        m_out += m_textured ? "/" : "//";
        appendNumber(m_out,
                     m_before.normals + (m_normals == NormalBinding::PerVertex ? number : 1));
    }

    std::string& m_out;
    ObjCounts m_before;
    unsigned int m_vertices;
    bool m_textured;
    NormalBinding m_normals;
};

class ObjVisitor : public PlacedGeometryVisitor {
public:
    ObjVisitor(std::ostream& out, bool coloured, const std::string& materialFile)
        : m_out(out), m_coloured(coloured), m_materialFile(materialFile) {}

    ObjMaterials materials;

    bool wroteAnything() const { return m_counts.vertices > 0; }

    void flush() {
        m_out << m_text;
        m_text.clear();
    }

protected:
    void enter(osg::Node& node) override {
        m_surfaces.push_back(surface().with(node.getStateSet()));
        m_names.push_back(node.getName().empty() && !m_names.empty() ? m_names.back()
                                                                     : node.getName());
    }

    void leave(osg::Node&) override {
        m_surfaces.pop_back();
        m_names.pop_back();
    }

    void visit(osg::Geometry& geometry, const osg::Matrixd& toWorld) override {
        const VectorArray vertices(geometry.getVertexArray());
        if (vertices.size() == 0 || geometry.getNumPrimitiveSets() == 0)
            return;
        m_text += "o " + freeName() + "\n";
        useMaterial();
        const ObjCounts before = m_counts;
        const NormalBinding normals = normalBinding(geometry, vertices.size());
        writeVertices(geometry, vertices, toWorld);
        const bool textured = writeTextureCoordinates(geometry, vertices.size());
        if (normals != NormalBinding::None)
            writeNormals(VectorArray(geometry.getNormalArray()), normals, vertices.size(), toWorld);
        ElementWriter elements(m_text, before, vertices.size(), textured, normals);
        geometry.accept(static_cast<osg::PrimitiveIndexFunctor&>(elements));
        flush();
    }

private:
    ObjSurface surface() const { return m_surfaces.empty() ? ObjSurface() : m_surfaces.back(); }

    void useMaterial() {
        const bool first = materials.empty();
        const std::string name = materials.nameOf(surface());
        if (name.empty())
            return;
        if (first)
            m_text += "mtllib " + m_materialFile + "\n";
        m_text += "usemtl " + name + "\n";
    }

    /// The name of what is written, made to differ from all before: readers join what is named
    /// alike.
    std::string freeName() {
        std::string wanted = m_names.back().empty() ? nameForUnnamed : m_names.back();
        std::replace_if(
            wanted.begin(), wanted.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        std::string name = wanted;
        for (int copy = 2; !m_taken.insert(name).second; ++copy)
            name = wanted + "_" + std::to_string(copy);
        return name;
    }

    void writeVertices(const osg::Geometry& geometry, const VectorArray& vertices,
                       const osg::Matrixd& toWorld) {
        const VertexColours colours(geometry);
        const bool untouched = toWorld.isIdentity();
        const bool single = untouched && vertices.single() && shortTextsSuffice(vertices);
        for (unsigned int i = 0; i < vertices.size(); ++i) {
            const osg::Vec3d local = vertices.at(i);
            m_text += 'v';
            writeVector(turned(untouched ? local : local * toWorld), single);
            if (m_coloured)
                writeVector(osg::Vec3d(colours.at(i).r(), colours.at(i).g(), colours.at(i).b()),
                            true);
            endLine();
        }
        m_counts.vertices += vertices.size();
    }

    bool writeTextureCoordinates(const osg::Geometry& geometry, unsigned int vertices) {
        const VectorArray coordinates(geometry.getTexCoordArray(0));
        if (coordinates.size() < vertices)
            return false;
        const osg::ref_ptr<const osg::TexMat> matrix = surface().textureMatrix;
        for (unsigned int i = 0; i < vertices; ++i) {
            const osg::Vec3d plain = coordinates.at(i);
            const osg::Vec3d placed = matrix ? plain * matrix->getMatrix() : plain;
            m_text += "vt ";
            appendNumber(m_text, static_cast<float>(placed.x()));
            appendNumber(m_text += ' ', static_cast<float>(placed.y()));
            endLine();
        }
        m_counts.textureCoordinates += vertices;
        return true;
    }

    void writeNormals(const VectorArray& normals, NormalBinding binding, unsigned int vertices,
                      const osg::Matrixd& toWorld) {
        const unsigned int count = binding == NormalBinding::Overall ? 1 : vertices;
        const bool untouched = toWorld.isIdentity();
        const osg::Matrixd toLocal = osg::Matrixd::inverse(toWorld);
        for (unsigned int i = 0; i < count; ++i) {
            osg::Vec3d normal = normals.at(i);
            if (!untouched) {
                normal = osg::Matrixd::transform3x3(toLocal, normal);
                normal.normalize();
            }
            m_text += "vn";
            writeVector(turned(normal), true);
            endLine();
        }
        m_counts.normals += count;
    }

    void writeVector(const osg::Vec3d& v, bool single) {
        for (unsigned int i = 0; i < 3; ++i) {
            m_text += ' ';
            if (single)
                appendNumber(m_text, static_cast<float>(v[i]));
            else
                appendNumber(m_text, v[i]);
        }
    }

    void endLine() {
        m_text += '\n';
        if (m_text.size() > flushedBytes)
            flush();
    }

    std::ostream& m_out;
    bool m_coloured;
    std::string m_materialFile;
    std::string m_text; ///< not yet in the stream
    ObjCounts m_counts;
    std::vector<ObjSurface> m_surfaces; ///< of the nodes above, and of this one
    std::vector<std::string> m_names;   ///< likewise
    std::set<std::string> m_taken;
};

} // namespace

bool writeObj(osg::Node& model, std::ostream& obj, std::ostream& materials,
              const std::string& materialFile) {
    ColourSearch colours;
    model.accept(colours);
    ObjVisitor visitor(obj, colours.found, materialFile);
    model.accept(visitor);
    visitor.flush();
    visitor.materials.write(materials);
    return visitor.wroteAnything();
}

} // namespace orbisk
