#include "readers/PlyReader.h"

#include "readers/CreaseNormals.h"
#include "readers/PlyFaces.h"
#include "readers/PlyHeader.h"
#include "readers/PlyRows.h"
#include "readers/PlyVertices.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Notify>
#include <osg/TexEnv>
#include <osg/Texture2D>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orbisk {

namespace {

constexpr std::string_view invertedComment = "modified by flipply";
constexpr std::string_view textureComment = "TextureFile";

/// With fewer vertices than this, the library names them in two bytes.
constexpr unsigned int leastForWideIndices = 16384;

std::unique_ptr<PlyRows> openBody(const PlyHeader& header, std::string_view file) {
    const std::string_view body = file.substr(header.size);
    if (header.format == PlyFormat::Ascii)
        return std::make_unique<PlyTextRows>(body);
    return std::make_unique<PlyBinaryRows>(body, header.format == PlyFormat::BigEndian
                                                     ? ByteOrder::BigEndian
                                                     : ByteOrder::LittleEndian);
}

/// Reads what there is of a PLY file's body.
class BodyReader {
public:
    BodyReader(const PlyHeader& header, std::string_view file)
        : m_header(header), m_rows(openBody(header, file)),
          m_inverted(std::find(header.comments.begin(), header.comments.end(), invertedComment) !=
                     header.comments.end()) {}

    /// False where there are no vertices, or not all of them. Faces are taken as far as they go.
    bool read() {
        for (const PlyElement& element : m_header.elements) {
            PlyRowReceiver* receiver = nullptr;
            if (element.name == "vertex" && !m_vertices && PlyVertices::canTake(element)) {
                const std::size_t mostRows =
                    (m_rows->remaining() + 1) / element.leastRowSize(m_header.format);
                if (element.rows > mostRows)
                    return false;
                m_vertexRows = element.rows;
                receiver = &m_vertices.emplace(element, element.rows);
            } else if (const auto kind = kindOf(element); kind && PlyFaces::canTake(element)) {
                receiver = &m_faces.emplace_back(element, *kind, m_inverted, m_rows->remaining());
            }
            m_complete = m_rows->read(element, receiver);
            if (!m_complete)
                break;
        }
        if (!m_vertices || m_vertices->rows() < m_vertexRows)
            return false;
        m_vertices->finish();
        return true;
    }

    /// Whether no row was missing.
    bool isComplete() const { return m_complete; }

    PlyVertices& vertices() { return *m_vertices; }

    PlyFaces::Indices takeFaces() {
        PlyFaces::Indices all;
        for (PlyFaces& faces : m_faces) {
            PlyFaces::Indices some = faces.take(*m_vertices);
            append(all.triangles, std::move(some.triangles));
            append(all.quads, std::move(some.quads));
            all.dropped += some.dropped;
        }
        return all;
    }

private:
    static std::optional<PlyFaces::Kind> kindOf(const PlyElement& element) {
        if (element.name == "face")
            return PlyFaces::Kind::Polygons;
        if (element.name == "tristrips")
            return PlyFaces::Kind::Strips;
        return std::nullopt;
    }

    static void append(std::vector<unsigned int>& all, std::vector<unsigned int>&& some) {
        if (all.empty())
            all = std::move(some);
        else
            all.insert(all.end(), some.begin(), some.end());
    }

    const PlyHeader& m_header;
    std::unique_ptr<PlyRows> m_rows;
    bool m_inverted;
    bool m_complete = true;
    std::uint64_t m_vertexRows = 0; ///< as the header claims
    std::optional<PlyVertices> m_vertices;
    std::vector<PlyFaces> m_faces;
};

osg::ref_ptr<osg::DrawElements> makeElements(GLenum mode, const std::vector<unsigned int>& indices,
                                             bool wide) {
    if (wide)
        return new osg::DrawElementsUInt(mode, indices.begin(), indices.end());
    return new osg::DrawElementsUShort(mode, indices.begin(), indices.end());
}

void addElements(osg::Geometry& geometry, GLenum mode, const std::vector<unsigned int>& indices,
                 bool wide = true) {
    if (!indices.empty())
        geometry.addPrimitiveSet(makeElements(mode, indices, wide));
}

/// Takes out triangles that name a vertex twice.
void dropLines(std::vector<unsigned int>& triangles) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 2 < triangles.size(); i += 3) {
        const unsigned int a = triangles[i];
        const unsigned int b = triangles[i + 1];
        const unsigned int c = triangles[i + 2];
        if (a == b || b == c || c == a)
            continue;
        triangles[kept++] = a;
        triangles[kept++] = b;
        triangles[kept++] = c;
    }
    triangles.resize(kept);
}

std::vector<unsigned int> trianglesOf(const std::vector<unsigned int>& quads) {
    std::vector<unsigned int> triangles;
    triangles.reserve(quads.size() / 4 * 6);
    for (std::size_t i = 0; i + 3 < quads.size(); i += 4)
        for (const std::size_t corner : {0, 1, 2, 0, 2, 3})
            triangles.push_back(quads[i + corner]);
    return triangles;
}

template <class Array>
void appendCopies(Array* array, const std::vector<unsigned int>& copies) {
    if (!array)
        return;
    array->reserve(array->size() + copies.size());
    for (const unsigned int original : copies)
        array->push_back((*array)[original]);
}

CreaseNormals creaseNormalsOf(const osg::Array& positions, std::vector<unsigned int>& triangles) {
    if (const auto* doubles = dynamic_cast<const osg::Vec3dArray*>(&positions))
        return makeCreaseNormals(*doubles, triangles);
    return makeCreaseNormals(static_cast<const osg::Vec3Array&>(positions), triangles);
}

/// Gives a mesh without normals some, as smooth as it looks; quadrangles become triangles on the
/// way.
void smooth(osg::Geometry& geometry, PlyVertices& vertices, PlyFaces::Indices faces) {
    dropLines(faces.triangles);
    const std::size_t ofTriangles = faces.triangles.size();
    std::vector<unsigned int> ofQuads = trianglesOf(faces.quads);
    dropLines(ofQuads);
    std::vector<unsigned int>& all = faces.triangles;
    all.insert(all.end(), ofQuads.begin(), ofQuads.end());
    const CreaseNormals crease = creaseNormalsOf(vertices.positions(), all);
    appendCopies(dynamic_cast<osg::Vec3Array*>(&vertices.positions()), crease.copies);
    appendCopies(dynamic_cast<osg::Vec3dArray*>(&vertices.positions()), crease.copies);
    appendCopies(vertices.colours(), crease.copies);
    appendCopies(vertices.textureCoordinates(), crease.copies);
    geometry.setNormalArray(crease.normals, osg::Array::BIND_PER_VERTEX);
    ofQuads.assign(all.begin() + static_cast<std::ptrdiff_t>(ofTriangles), all.end());
    all.resize(ofTriangles);
    const bool wide = vertices.positions().getNumElements() >= leastForWideIndices;
    addElements(geometry, osg::PrimitiveSet::TRIANGLES, all, wide);
    addElements(geometry, osg::PrimitiveSet::TRIANGLES, ofQuads, wide);
}

osg::ref_ptr<osg::Geometry> makeGeometry(PlyVertices& vertices, PlyFaces::Indices faces) {
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(&vertices.positions());
    const bool isCloud = faces.triangles.empty() && faces.quads.empty();
    if (vertices.normals()) {
        geometry->setNormalArray(vertices.normals(), osg::Array::BIND_PER_VERTEX);
        addElements(*geometry, osg::PrimitiveSet::TRIANGLES, faces.triangles);
        addElements(*geometry, osg::PrimitiveSet::QUADS, faces.quads);
    } else {
        smooth(*geometry, vertices, std::move(faces));
    }
    if (isCloud)
        geometry->addPrimitiveSet(
            new osg::DrawArrays(osg::PrimitiveSet::POINTS, 0,
                                static_cast<GLsizei>(vertices.positions().getNumElements())));
    if (vertices.colours())
        geometry->setColorArray(vertices.colours(), osg::Array::BIND_PER_VERTEX);
    if (vertices.textureCoordinates())
        geometry->setTexCoordArray(0, vertices.textureCoordinates());
    geometry->setUseVertexBufferObjects(true);
    return geometry;
}

/// The picture that a comment names, beside the model where the name tells no folder; the last
/// comment counts. Empty where there is none.
std::string textureNameIn(const PlyHeader& header, const std::string& fileName) {
    std::string texture;
    for (const std::string& comment : header.comments)
        if (comment.compare(0, textureComment.size(), textureComment) == 0 &&
            comment.size() > textureComment.size() + 1)
            texture = comment.substr(textureComment.size() + 1);
    if (!texture.empty() && !osgDB::isAbsolutePath(texture))
        texture = osgDB::concatPaths(osgDB::getFilePath(fileName), texture);
    return texture;
}

void addTexture(osg::Geometry& geometry, const std::string& name, const osgDB::Options* options) {
    const osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(name, options);
    if (!image)
        return;
    const osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image);
    texture->setResizeNonPowerOfTwoHint(false);
    osg::StateSet* stateSet = geometry.getOrCreateStateSet();
    stateSet->setTextureAttributeAndModes(0, texture, osg::StateAttribute::ON);
    stateSet->setTextureAttribute(0, new osg::TexEnv(osg::TexEnv::REPLACE));
}

} // namespace

PlyReader::PlyReader() {
    supportsExtension("ply", "Polygon file format");
}

osgDB::ReaderWriter::ReadResult PlyReader::readBytes(FileBytes bytes, const std::string& fileName,
                                                     const osgDB::Options* options) const {
    const std::optional<PlyHeader> header = parsePlyHeader(bytes.view());
    if (!header)
        return ReadResult::ERROR_IN_READING_FILE;
    BodyReader body(*header, bytes.view());
    if (!body.read())
        return ReadResult::ERROR_IN_READING_FILE;
    PlyFaces::Indices faces = body.takeFaces();
    if (!body.isComplete())
        OSG_WARN << fileName << " ends early: what there is of its faces is shown." << std::endl;
    if (faces.dropped > 0)
        OSG_WARN << fileName << ": " << faces.dropped << " faces name vertices that are not there."
                 << std::endl;
    const osg::ref_ptr<osg::Geometry> geometry = makeGeometry(body.vertices(), std::move(faces));
    const std::string texture = textureNameIn(*header, fileName);
    if (!texture.empty())
        addTexture(*geometry, texture, options);
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(geometry);
    return geode.get();
}

} // namespace orbisk
