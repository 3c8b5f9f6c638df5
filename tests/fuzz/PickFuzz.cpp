// Odd meshes and odd rays: the index finds what the walk finds, to the bit, or both say that the
// indices go beyond the vertices.

#include "measure/IndexedVisitor.h"
#include "measure/PickIndex.h"
#include "support/Fuzzing.h"

#include <osg/Geometry>
#include <osg/Group>
#include <osg/MatrixTransform>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

using namespace orbisk;
using fuzz::Bytes;
using fuzz::require;

constexpr std::size_t mostGeometries = 3;
/// From so many on a geometry gets a tree; below, both ways are one.
constexpr std::size_t vertexCounts[] = {0, 1, 3, 40, 300, 600};
constexpr std::size_t mostSets = 3;
/// So much of a mesh that is even elsewhere is odd; were all of it, no input would be long enough.
constexpr std::size_t mostEdits = 20;
constexpr std::size_t gridWidth = 16;
constexpr std::size_t mostRays = 4;
/// Most indices point at a vertex, some anywhere.
constexpr std::size_t strayIndexChance = 64;

std::size_t anyIndex(Bytes& bytes, std::size_t vertices) {
    constexpr std::size_t anywhere = 65536;
    if (vertices == 0 || bytes.below(strayIndexChance) == strayIndexChance - 1)
        return bytes.below(anywhere);
    return bytes.below(vertices);
}

/// Mostly a strip of triangles along the vertices.
std::size_t gridIndex(std::size_t position, std::size_t vertices) {
    const std::size_t triangle = position / 3;
    return vertices == 0 ? 0 : (triangle + position % 3) % vertices;
}

template <class Elements>
osg::ref_ptr<osg::PrimitiveSet> elements(Bytes& bytes, GLenum mode, std::size_t vertices) {
    const osg::ref_ptr<Elements> set = new Elements(mode);
    const std::size_t count = vertexCounts[bytes.below(std::size(vertexCounts))];
    for (std::size_t i = 0; i < count; ++i)
        set->push_back(static_cast<typename Elements::value_type>(gridIndex(i, vertices)));
    for (std::size_t edits = count == 0 ? 0 : bytes.below(mostEdits); edits > 0; --edits) {
        const std::size_t at = bytes.below(count);
        (*set)[at] = static_cast<typename Elements::value_type>(anyIndex(bytes, vertices));
    }
    return set;
}

osg::ref_ptr<osg::PrimitiveSet> primitiveSet(Bytes& bytes, std::size_t vertices) {
    constexpr std::size_t modes = GL_POLYGON + 1;
    constexpr std::size_t spread = 700;
    const auto mode = static_cast<GLenum>(bytes.below(modes));
    switch (bytes.below(5)) {
    case 0:
        return new osg::DrawArrays(mode, static_cast<int>(bytes.below(spread)) - 10,
                                   static_cast<int>(bytes.below(spread)) - 10);
    case 1:
        return elements<osg::DrawElementsUByte>(bytes, mode, vertices);
    case 2:
        return elements<osg::DrawElementsUShort>(bytes, mode, vertices);
    case 3:
        return elements<osg::DrawElementsUInt>(bytes, mode, vertices);
    default:
        return new osg::DrawArrays(mode, 0, static_cast<int>(vertices));
    }
}

osg::Vec3d place(Bytes& bytes) {
    const double x = bytes.number();
    const double y = bytes.number();
    return {x, y, bytes.number()};
}

osg::Vec3d inSinglePrecision(const osg::Vec3d& place) {
    // Beyond its range the conversion is not defined.
    constexpr auto most = static_cast<double>(std::numeric_limits<float>::max());
    osg::Vec3d single;
    for (int axis = 0; axis < 3; ++axis)
        single[axis] =
            std::abs(place[axis]) > most ? std::numeric_limits<double>::infinity() : place[axis];
    return single;
}

/// A wavy ground, a few of its vertices anywhere.
std::vector<osg::Vec3d> places(Bytes& bytes, std::size_t count) {
    std::vector<osg::Vec3d> places;
    for (std::size_t i = 0; i < count; ++i)
        places.emplace_back(i % gridWidth, i / gridWidth, i * i % 5);
    for (std::size_t edits = count == 0 ? 0 : bytes.below(mostEdits); edits > 0; --edits) {
        const std::size_t at = bytes.below(count);
        places[at] = place(bytes);
    }
    return places;
}

osg::ref_ptr<osg::Array> vertexArray(Bytes& bytes, std::size_t count) {
    const std::size_t kind = bytes.below(8);
    if (kind == 0)
        return nullptr;
    if (kind == 1)
        return new osg::Vec2Array(static_cast<unsigned int>(count));
    const std::vector<osg::Vec3d> vertices = places(bytes, count);
    if (kind == 2)
        return new osg::Vec3dArray(vertices.begin(), vertices.end());
    const osg::ref_ptr<osg::Vec3Array> floats = new osg::Vec3Array;
    for (const osg::Vec3d& vertex : vertices)
        floats->push_back(inSinglePrecision(vertex));
    return floats;
}

/// Bounds that nobody computes: the library would read vertices by indices without looking.
class AnyBox : public osg::Drawable::ComputeBoundingBoxCallback {
public:
    explicit AnyBox(const osg::BoundingBox& box) : m_box(box) {}

    osg::BoundingBox computeBound(const osg::Drawable&) const override { return m_box; }

private:
    osg::BoundingBox m_box;
};

osg::ref_ptr<osg::Geometry> geometry(Bytes& bytes) {
    const osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    const std::size_t count = vertexCounts[bytes.below(std::size(vertexCounts))];
    geometry->setVertexArray(vertexArray(bytes, count).get());
    const std::size_t sets = bytes.below(mostSets + 1);
    for (std::size_t i = 0; i < sets; ++i)
        geometry->addPrimitiveSet(primitiveSet(bytes, count).get());
    const osg::Vec3 low = inSinglePrecision(place(bytes));
    const osg::Vec3 high = inSinglePrecision(place(bytes));
    const osg::ref_ptr<AnyBox> box = new AnyBox(osg::BoundingBox(low, high));
    geometry->setComputeBoundingBoxCallback(box.get());
    return geometry;
}

osg::Matrixd matrix(Bytes& bytes) {
    if (bytes.below(2) == 0)
        return osg::Matrixd();
    osg::Matrixd matrix;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix(row, column) = bytes.number();
    return matrix;
}

osg::ref_ptr<osg::Node> model(Bytes& bytes) {
    const osg::ref_ptr<osg::Group> model = new osg::Group;
    const std::size_t count = 1 + bytes.below(mostGeometries);
    for (std::size_t i = 0; i < count; ++i) {
        const osg::ref_ptr<osg::Geometry> part = geometry(bytes);
        if (bytes.below(2) == 0) {
            model->addChild(part);
            continue;
        }
        const osg::ref_ptr<osg::MatrixTransform> transform =
            new osg::MatrixTransform(matrix(bytes));
        transform->addChild(part);
        model->addChild(transform);
    }
    return model;
}

PickRay ray(Bytes& bytes) {
    PickRay ray{place(bytes), place(bytes)};
    if (bytes.below(2) == 0)
        ray.direction.normalize();
    return ray;
}

struct Found {
    bool isBeyond = false;
    std::vector<osg::Vec3d> hits;
};

Found found(osg::Node& model, IntersectionVisitor&& visitor) {
    Found found;
    try {
        model.accept(visitor);
    } catch (const std::out_of_range&) {
        found.isBeyond = true;
    }
    found.hits = visitor.hits().all();
    return found;
}

/// Numbers that are none differ in their bits from one computation to the next.
bool sameNumber(double one, double other) {
    return (one != one && other != other) || std::memcmp(&one, &other, sizeof one) == 0;
}

bool samePlace(const osg::Vec3d& one, const osg::Vec3d& other) {
    return sameNumber(one.x(), other.x()) && sameNumber(one.y(), other.y()) &&
           sameNumber(one.z(), other.z());
}

/// The first hit is the same, and what else the index tells was hit by the walk.
bool samePick(const std::vector<osg::Vec3d>& walk, const std::vector<osg::Vec3d>& tree) {
    if (walk.empty() || tree.empty())
        return walk.empty() && tree.empty();
    return samePlace(walk.front(), tree.front()) &&
           std::all_of(tree.begin(), tree.end(), [&walk](const osg::Vec3d& hit) {
               return std::any_of(walk.begin(), walk.end(), [&hit](const osg::Vec3d& known) {
                   return samePlace(hit, known);
               });
           });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* input, std::size_t size) {
    Bytes bytes(input, size);
    // A pick may change a model: each way gets its own.
    Bytes sameBytes = bytes;
    const osg::ref_ptr<osg::Node> walked = model(bytes);
    const osg::ref_ptr<osg::Node> indexed = model(sameBytes);
    PickIndex index;
    index.add(*indexed);
    index.finish();
    const std::size_t rays = 1 + bytes.below(mostRays);
    for (std::size_t i = 0; i < rays; ++i) {
        const PickRay along = ray(bytes);
        const Found walk = found(*walked, IntersectionVisitor(along.origin, along.direction));
        const Found tree = found(*indexed, IndexedVisitor(along, index));
        require(walk.isBeyond == tree.isBeyond, "only one way met indices beyond the vertices");
        require(samePick(walk.hits, tree.hits), "the index finds something else than the walk");
        index.finish();
    }
    return 0;
}
