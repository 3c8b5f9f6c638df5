#include "readers/ObjGeometry.h"

#include "readers/TriangleOrder.h"

#include <osg/BoundingBox>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace orbisk {

namespace {

constexpr std::uint32_t none = ~std::uint32_t{0};
constexpr std::size_t cornersOfTriangle = 3;

/// Faces of up to so many corners are split from their first corner, whatever their shape.
constexpr std::size_t mostCornersOfPlainFace = 4;

/// A mesh of so few vertices is in a graphics card's cache as a whole.
constexpr std::size_t mostVerticesOfCache = 16;

constexpr std::size_t mostShortIndices = 65536;

template <class Vector, class Distinct>
std::vector<std::uint32_t> numbersOf(const std::vector<Vector>& values, Distinct& distinct) {
    std::vector<std::uint32_t> numbers;
    numbers.reserve(values.size());
    distinct.reserve(values.size());
    for (const Vector& value : values)
        numbers.push_back(distinct.numberOf(value));
    return numbers;
}

template <class Indices>
osg::ref_ptr<osg::DrawElements> drawing(GLenum mode, const std::vector<std::uint32_t>& numbers) {
    osg::ref_ptr<Indices> indices = new Indices(mode);
    indices->reserve(numbers.size());
    for (const std::uint32_t number : numbers)
        indices->push_back(static_cast<typename Indices::value_type>(number));
    return indices;
}

void addDrawing(GLenum mode, const std::vector<std::uint32_t>& numbers, osg::Geometry& geometry) {
    if (numbers.empty())
        return;
    const bool areShort = geometry.getVertexArray()->getNumElements() <= mostShortIndices;
    geometry.addPrimitiveSet(areShort ? drawing<osg::DrawElementsUShort>(mode, numbers)
                                      : drawing<osg::DrawElementsUInt>(mode, numbers));
}

/// An array of one value for each vertex, which `valueOf` gives.
template <class Array, class Vertex, class ValueOf>
osg::ref_ptr<Array> arrayOf(const std::vector<Vertex>& vertices, const ValueOf& valueOf) {
    osg::ref_ptr<Array> array = new Array(osg::Array::BIND_PER_VERTEX);
    array->reserve(vertices.size());
    for (const Vertex& vertex : vertices)
        array->push_back(valueOf(vertex));
    return array;
}

template <class Array>
const auto& valueIn(const osg::Array* array, unsigned int index) {
    return static_cast<const Array&>(*array)[index];
}

bool isUsablePosition(const osg::Vec3d& position) {
    return std::isfinite(static_cast<float>(position.x())) &&
           std::isfinite(static_cast<float>(position.y())) &&
           std::isfinite(static_cast<float>(position.z()));
}

} // namespace

template <class Vector>
std::uint64_t ObjGeometry::SameVector::hash(const Vector& vector) {
    std::uint64_t hash = 0;
    for (int i = 0; i < Vector::num_components; ++i) {
        // Makes 0 of -0.
        const double component = static_cast<double>(vector[i]) + 0.0;
        std::uint64_t bits = 0;
        std::memcpy(&bits, &component, sizeof bits);
        hash = mixedHash(hash, bits);
    }
    return hash;
}

bool ObjGeometry::SameVertex::same(const Vertex& a, const Vertex& b) {
    return a.position == b.position && a.texture == b.texture && a.normal == b.normal &&
           a.colour == b.colour;
}

std::uint64_t ObjGeometry::SameVertex::hash(const Vertex& vertex) {
    constexpr int halfOfBits = 32;
    const auto pair = [](std::uint32_t high, std::uint32_t low) {
        return std::uint64_t{high} << halfOfBits | low;
    };
    return mixedHash(mixedHash(0, pair(vertex.normal, vertex.texture)),
                     pair(vertex.colour, vertex.position));
}

ObjGeometry::ObjGeometry(const ObjFile& file, const ObjOptions& options)
    : m_file(file), m_options(options) {
    choosePrecision();
    numberValues();
}

/// Vertices become doubles where floats would move one of them by more than a millionth of the size
/// of the model.
void ObjGeometry::choosePrecision() {
    constexpr double tolerance = 1e-6;
    osg::BoundingBoxd box;
    double squaredError = 0.0;
    for (const ObjCorner& corner : m_file.corners) {
        if (corner.position == ObjCorner::none)
            continue;
        const osg::Vec3d& position = m_file.positions[static_cast<std::size_t>(corner.position)];
        box.expandBy(position);
        const osg::Vec3d error = position - osg::Vec3d(osg::Vec3(position));
        squaredError = std::max(squaredError, error.length2());
    }
    const double size = box.valid() ? 2.0 * box.radius() : 0.0;
    m_isDouble = std::sqrt(squaredError) > size * tolerance && box.valid();
    if (m_isDouble)
        m_base = inScene(box.center());
}

void ObjGeometry::numberValues() {
    m_positionNumbers.reserve(m_file.positions.size());
    m_positions.reserve(m_file.positions.size());
    for (const osg::Vec3d& position : m_file.positions) {
        const osg::Vec3d value = !isUsablePosition(position) ? osg::Vec3d()
                                 : m_isDouble                ? position
                                                             : osg::Vec3d(osg::Vec3(position));
        m_positionNumbers.push_back(m_positions.numberOf(inScene(value)));
    }
    if (!m_file.colours.empty()) {
        m_colourNumbers = numbersOf(m_file.colours, m_colours);
        m_colourNumbers.resize(m_file.positions.size(), m_colours.numberOf(osg::Vec4(1, 1, 1, 1)));
    }
    m_textureNumbers = numbersOf(m_file.textures, m_textures);
    m_normalNumbers.reserve(m_file.normals.size());
    for (const osg::Vec3& normal : m_file.normals)
        m_normalNumbers.push_back(m_normals.numberOf(osg::Vec3(inScene(osg::Vec3d(normal)))));
}

osg::Vec3d ObjGeometry::inScene(const osg::Vec3d& inFile) const {
    return m_options.turned ? osg::Vec3d(inFile.x(), -inFile.z(), inFile.y()) : inFile;
}

osg::Vec3 ObjGeometry::inFile(const osg::Vec3& inScene) const {
    return m_options.turned ? osg::Vec3(inScene.x(), inScene.z(), -inScene.y()) : inScene;
}

osg::Vec3 ObjGeometry::local(std::uint32_t position) const {
    return osg::Vec3(m_positions.values()[position] - m_base);
}

const ObjCorner* ObjGeometry::cornersOf(const ObjElement& element) const {
    return m_file.corners.data() + element.firstCorner;
}

bool ObjGeometry::isUsable(const ObjElement& element) const {
    const ObjCorner* const corners = cornersOf(element);
    const bool isWhole =
        std::all_of(corners, corners + element.cornerCount,
                    [](const ObjCorner& c) { return c.position != ObjCorner::none; });
    const bool isFace = element.kind == ObjElement::Kind::Face;
    return isWhole && (!isFace || element.cornerCount >= cornersOfTriangle);
}

ObjGeometry::Vertex ObjGeometry::vertexOf(const ObjCorner& corner, const ObjGroup& group) const {
    const auto position = static_cast<std::size_t>(corner.position);
    Vertex vertex;
    vertex.position = m_positionNumbers[position];
    if (!m_colourNumbers.empty())
        vertex.colour = m_colourNumbers[position];
    if (group.hasTextures)
        vertex.texture = m_textureNumbers[static_cast<std::size_t>(corner.texture)];
    if (group.hasNormals)
        vertex.normal = m_normalNumbers[static_cast<std::size_t>(corner.normal)];
    return vertex;
}

/// The sum over the corners, in the axes of the file: in the scene's rounding could give another
/// sign.
osg::Vec3 ObjGeometry::windingNormal(const std::vector<Vertex>& face) const {
    osg::Vec3 normal;
    for (std::size_t i = 2; i < face.size(); ++i) {
        const osg::Vec3 a = inFile(local(face[i - 2].position));
        const osg::Vec3 b = inFile(local(face[i - 1].position));
        const osg::Vec3 c = inFile(local(face[i].position));
        normal += (b - a) ^ (c - b);
    }
    normal.normalize();
    return normal;
}

/// Gives all corners the normal of the first three.
void ObjGeometry::setFlatNormal(std::vector<Vertex>& face) {
    const osg::Vec3 a = inFile(local(face[0].position));
    osg::Vec3 normal =
        (inFile(local(face[1].position)) - a) ^ (inFile(local(face[2].position)) - a);
    normal.normalize();
    const std::uint32_t number = m_normals.numberOf(osg::Vec3(inScene(osg::Vec3d(normal))));
    for (Vertex& vertex : face)
        vertex.normal = number;
}

bool ObjGeometry::facesAwayFromNormals(const std::vector<Vertex>& face) const {
    osg::Vec3 average;
    for (const Vertex& vertex : face)
        average += inFile(m_normals.values()[vertex.normal]);
    average.normalize();
    return windingNormal(face) * average < 0.0f;
}

std::uint32_t ObjGeometry::numberOf(const Vertex& vertex, Mesh& mesh) {
    if (m_vertexAtPosition.size() <= vertex.position)
        m_vertexAtPosition.resize(m_positions.values().size(), none);
    // Mostly a position's last vertex comes again, which spares a look into the large table.
    std::uint32_t& last = m_vertexAtPosition[vertex.position];
    if (last == none || !SameVertex::same(mesh.vertices.values()[last], vertex))
        last = mesh.vertices.numberOf(vertex);
    return last;
}

void ObjGeometry::forgetVertices(const std::vector<Vertex>& vertices) {
    for (const Vertex& vertex : vertices)
        m_vertexAtPosition[vertex.position] = none;
}

void ObjGeometry::addElement(const ObjElement& element, const ObjGroup& group, Mesh& mesh) {
    if (!isUsable(element))
        return;
    const ObjCorner* const corners = cornersOf(element);
    std::vector<Vertex> vertices;
    vertices.reserve(element.cornerCount);
    for (std::uint32_t i = 0; i < element.cornerCount; ++i)
        vertices.push_back(vertexOf(corners[i], group));
    switch (element.kind) {
    case ObjElement::Kind::Points:
        for (const Vertex& vertex : vertices)
            mesh.points.push_back(numberOf(vertex, mesh));
        break;
    case ObjElement::Kind::Line:
        for (std::size_t i = 1; i < vertices.size(); ++i)
            for (const Vertex& end : {vertices[i - 1], vertices[i]})
                mesh.lines.push_back(numberOf(end, mesh));
        break;
    case ObjElement::Kind::Face:
        addFace(std::move(vertices), mesh);
        break;
    }
}

void ObjGeometry::addFace(std::vector<Vertex> face, Mesh& mesh) {
    if (mesh.isFlat)
        setFlatNormal(face);
    if (mesh.hasNormals && m_options.facingNormals && facesAwayFromNormals(face))
        std::reverse(face.begin(), face.end());
    if (face.size() > mostCornersOfPlainFace && m_options.split) {
        std::vector<osg::Vec3> outline;
        outline.reserve(face.size());
        for (const Vertex& vertex : face)
            outline.push_back(local(vertex.position));
        if (!PolygonTessellator::isFan(outline)) {
            addPolygon(face, outline, mesh);
            return;
        }
    }
    const std::uint32_t first = numberOf(face[0], mesh);
    std::uint32_t previous = numberOf(face[1], mesh);
    for (std::size_t i = 2; i < face.size(); ++i) {
        const std::uint32_t next = numberOf(face[i], mesh);
        mesh.triangles.insert(mesh.triangles.end(), {first, previous, next});
        previous = next;
    }
}

void ObjGeometry::addPolygon(const std::vector<Vertex>& face, const std::vector<osg::Vec3>& outline,
                             Mesh& mesh) {
    std::vector<std::uint32_t> numbers;
    numbers.reserve(face.size());
    for (const Vertex& vertex : face)
        numbers.push_back(numberOf(vertex, mesh));
    const osg::ref_ptr<osg::Geometry> polygon = polygonOf(face, outline, mesh);
    const std::vector<std::uint32_t> triangles = m_tessellator.split(*polygon);
    const unsigned int count = polygon->getVertexArray()->getNumElements();
    for (auto i = static_cast<unsigned int>(face.size()); i < count; ++i)
        numbers.push_back(numberOf(addedVertex(*polygon, i), mesh));
    for (const std::uint32_t corner : triangles)
        mesh.triangles.push_back(numbers[corner]);
}

osg::ref_ptr<osg::Geometry> ObjGeometry::polygonOf(const std::vector<Vertex>& face,
                                                   const std::vector<osg::Vec3>& outline,
                                                   const Mesh& mesh) const {
    osg::ref_ptr<osg::Geometry> polygon = new osg::Geometry;
    polygon->setVertexArray(new osg::Vec3Array(outline.begin(), outline.end()));
    if (mesh.hasNormals)
        polygon->setNormalArray(arrayOf<osg::Vec3Array>(
            face, [&](const Vertex& vertex) { return m_normals.values()[vertex.normal]; }));
    if (!m_colourNumbers.empty())
        polygon->setColorArray(arrayOf<osg::Vec4Array>(
            face, [&](const Vertex& vertex) { return m_colours.values()[vertex.colour]; }));
    if (mesh.hasTextures)
        polygon->setTexCoordArray(0, arrayOf<osg::Vec2Array>(face, [&](const Vertex& vertex) {
                                      return m_textures.values()[vertex.texture];
                                  }));
    return polygon;
}

/// The vertex that splitting a polygon has added, where two of its sides cross.
ObjGeometry::Vertex ObjGeometry::addedVertex(const osg::Geometry& polygon, unsigned int index) {
    Vertex vertex;
    vertex.position = m_positions.numberOf(
        osg::Vec3d(valueIn<osg::Vec3Array>(polygon.getVertexArray(), index)) + m_base);
    if (const osg::Array* normals = polygon.getNormalArray())
        vertex.normal = m_normals.numberOf(valueIn<osg::Vec3Array>(normals, index));
    if (const osg::Array* colours = polygon.getColorArray())
        vertex.colour = m_colours.numberOf(valueIn<osg::Vec4Array>(colours, index));
    if (const osg::Array* textures = polygon.getTexCoordArray(0))
        vertex.texture = m_textures.numberOf(valueIn<osg::Vec2Array>(textures, index));
    return vertex;
}

/// Gives the vertices of the mesh in the order in which they are used first, without those that are
/// not, and makes the mesh name them so.
std::vector<ObjGeometry::Vertex> ObjGeometry::renumber(Mesh& mesh) {
    std::vector<std::uint32_t> places(mesh.vertices.values().size(), none);
    std::vector<Vertex> vertices;
    for (auto* numbers : {&mesh.triangles, &mesh.lines, &mesh.points})
        for (std::uint32_t& number : *numbers) {
            std::uint32_t& place = places[number];
            if (place == none) {
                place = static_cast<std::uint32_t>(vertices.size());
                vertices.push_back(mesh.vertices.values()[number]);
            }
            number = place;
        }
    return vertices;
}

/// Normals that are the same for all vertices at one place: the sum of those of its triangles, each
/// as long as its triangle is large.
osg::ref_ptr<osg::Vec3Array> ObjGeometry::smoothNormals(const Mesh& mesh,
                                                        const std::vector<Vertex>& vertices) {
    std::vector<std::uint32_t> firstAtPlace;
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        std::uint32_t& first = m_vertexAtPosition[vertices[i].position];
        if (first == none)
            first = i;
        firstAtPlace.push_back(first);
    }
    forgetVertices(vertices);

    osg::ref_ptr<osg::Vec3Array> normals =
        new osg::Vec3Array(osg::Array::BIND_PER_VERTEX, static_cast<unsigned int>(vertices.size()));
    for (std::size_t i = 0; i < mesh.triangles.size(); i += cornersOfTriangle) {
        const std::uint32_t* const corner = &mesh.triangles[i];
        const osg::Vec3 a = local(vertices[corner[0]].position);
        const osg::Vec3 normal =
            (local(vertices[corner[1]].position) - a) ^ (local(vertices[corner[2]].position) - a);
        for (std::size_t j = 0; j < cornersOfTriangle; ++j)
            (*normals)[firstAtPlace[corner[j]]] += normal;
    }
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        osg::Vec3& normal = (*normals)[i];
        if (firstAtPlace[i] == i)
            normal.normalize();
        else
            normal = (*normals)[firstAtPlace[i]];
    }
    return normals;
}

osg::ref_ptr<osg::Array> ObjGeometry::positionsOf(const std::vector<Vertex>& vertices) const {
    if (m_isDouble)
        return arrayOf<osg::Vec3dArray>(
            vertices, [&](const Vertex& vertex) { return m_positions.values()[vertex.position]; });
    return arrayOf<osg::Vec3Array>(vertices,
                                   [&](const Vertex& vertex) { return local(vertex.position); });
}

void ObjGeometry::setAttributes(const Mesh& mesh, const std::vector<Vertex>& vertices,
                                osg::Geometry& geometry) const {
    if (mesh.hasNormals)
        geometry.setNormalArray(arrayOf<osg::Vec3Array>(
            vertices, [&](const Vertex& vertex) { return m_normals.values()[vertex.normal]; }));
    if (!m_colourNumbers.empty())
        geometry.setColorArray(arrayOf<osg::Vec4Array>(
            vertices, [&](const Vertex& vertex) { return m_colours.values()[vertex.colour]; }));
    if (mesh.hasTextures)
        geometry.setTexCoordArray(0, arrayOf<osg::Vec2Array>(vertices, [&](const Vertex& vertex) {
                                      return m_textures.values()[vertex.texture];
                                  }));
}

osg::ref_ptr<osg::Geometry> ObjGeometry::make(const ObjGroup& group,
                                              const std::vector<const ObjElement*>& elements) {
    const bool isSurface = std::all_of(elements.begin(), elements.end(), [](const auto* element) {
        return element->kind == ObjElement::Kind::Face;
    });
    Mesh mesh;
    mesh.hasTextures = group.hasTextures;
    mesh.isFlat = m_options.flat && !group.hasNormals && isSurface;
    mesh.hasNormals = group.hasNormals || mesh.isFlat;
    for (const ObjElement* element : elements)
        addElement(*element, group, mesh);
    forgetVertices(mesh.vertices.values());
    const auto vertexCount = static_cast<std::uint32_t>(mesh.vertices.values().size());
    if (isSurface && m_options.reordered && vertexCount > mostVerticesOfCache)
        mesh.triangles = cacheFriendlyOrder(mesh.triangles, vertexCount);
    const std::vector<Vertex> vertices = renumber(mesh);
    if (vertices.empty())
        return nullptr;
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(positionsOf(vertices));
    setAttributes(mesh, vertices, *geometry);
    if (!mesh.hasNormals && !m_options.flat && !mesh.triangles.empty())
        geometry->setNormalArray(smoothNormals(mesh, vertices));
    addDrawing(GL_TRIANGLES, mesh.triangles, *geometry);
    addDrawing(GL_LINES, mesh.lines, *geometry);
    addDrawing(GL_POINTS, mesh.points, *geometry);
    return geometry;
}

} // namespace orbisk
