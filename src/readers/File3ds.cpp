#include "readers/File3ds.h"

#include "readers/Chunks3ds.h"

#include <osg/Matrixd>
#include <osg/Vec4>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orbisk {

namespace {

/// Bytes that a name may take, with the zero at its end.
constexpr std::size_t longestName = 64;

/// Deeper than this, whatever walks through a scene by calling itself may not come back.
constexpr std::size_t deepestNode = 256;

constexpr std::uint16_t noParent = 0xFFFF;
constexpr float percent = 100.0f;
constexpr float mostOfByte = 255.0f;

// What the flags of a texture map say.
constexpr unsigned int mapDoesNotRepeat = 0x0010;
constexpr unsigned int mapHasAlpha = 0x0040;

/// The length below which an axis has no direction.
constexpr double leastAxis = 1e-5;

/// A turn: x, y, z, w.
using Turn = osg::Vec4;

struct Key {
    std::int32_t frame = 0;
    osg::Vec4 value; ///< three numbers, or an axis and the angle about it in radians
};

using Track = std::vector<Key>;

std::string nameAt(ByteReader& reader) {
    return std::string(reader.readText(longestName));
}

osg::Vec3 vectorAt(ByteReader& reader) {
    osg::Vec3 vector;
    for (int i = 0; i < 3; ++i)
        vector[i] = reader.read<float>();
    return vector;
}

/// Whether `count` things of `size` bytes have room up to `end`; else the file makes no sense.
bool fits(ByteReader& reader, std::size_t count, std::size_t size, std::size_t end) {
    if (reader.position() <= end && count * size <= end - reader.position())
        return true;
    reader.fail();
    return false;
}

osg::Vec3 readByteColour(ByteReader& reader) {
    osg::Vec3 colour;
    for (int i = 0; i < 3; ++i)
        colour[i] = static_cast<float>(reader.read<std::uint8_t>()) / mostOfByte;
    return colour;
}

/// A colour may be there twice; the linear one counts.
void readColour(ByteReader& reader, std::size_t end, osg::Vec3& colour) {
    bool isLinear = false;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        const bool linear = kind == LinearColourBytes || kind == LinearColourFloat;
        if (isLinear && !linear)
            return;
        if (kind == LinearColourBytes || kind == ColourBytes)
            colour = readByteColour(reader);
        else if (kind == LinearColourFloat || kind == ColourFloat)
            colour = vectorAt(reader);
        isLinear = isLinear || linear;
    });
}

void readPercentage(ByteReader& reader, std::size_t end, float& share) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        if (kind == IntegerPercentage)
            share = static_cast<float>(reader.read<std::int16_t>()) / percent;
    });
}

void readTextureMap(ByteReader& reader, std::size_t end, TextureMap3ds& map) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t) {
        switch (kind) {
        case IntegerPercentage:
            map.percent = static_cast<float>(reader.read<std::int16_t>()) / percent;
            break;
        case MapName:
            map.name = nameAt(reader);
            break;
        case MapFlags: {
            const unsigned int flags = reader.read<std::uint16_t>();
            map.repeats = (flags & mapDoesNotRepeat) == 0;
            map.hasAlpha = (flags & mapHasAlpha) != 0;
            break;
        }
        case MapScaleU:
            map.scale.x() = reader.read<float>();
            break;
        case MapScaleV:
            map.scale.y() = reader.read<float>();
            break;
        case MapOffsetU:
            map.offset.x() = reader.read<float>();
            break;
        case MapOffsetV:
            map.offset.y() = reader.read<float>();
            break;
        default:
            break;
        }
    });
}

Material3ds readMaterial(ByteReader& reader, std::size_t end) {
    Material3ds material;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case MaterialName:
            material.name = nameAt(reader);
            break;
        case MaterialAmbient:
            readColour(reader, chunkEnd, material.ambient);
            break;
        case MaterialDiffuse:
            readColour(reader, chunkEnd, material.diffuse);
            break;
        case MaterialSpecular:
            readColour(reader, chunkEnd, material.specular);
            break;
        case MaterialShininess:
            readPercentage(reader, chunkEnd, material.shininess);
            break;
        case MaterialShineStrength:
            readPercentage(reader, chunkEnd, material.shineStrength);
            break;
        case MaterialTransparency:
            readPercentage(reader, chunkEnd, material.transparency);
            break;
        case MaterialTwoSided:
            material.isTwoSided = true;
            break;
        case MaterialTexture:
            readTextureMap(reader, chunkEnd, material.texture);
            break;
        case MaterialOpacity:
            readTextureMap(reader, chunkEnd, material.opacity);
            break;
        case MaterialReflection:
            readTextureMap(reader, chunkEnd, material.reflection);
            break;
        default:
            break;
        }
    });
    return material;
}

void readFaceMaterial(ByteReader& reader, std::size_t end, const File3ds& file, Mesh3ds& mesh) {
    const auto material = file.materialOfName.find(nameAt(reader));
    const std::size_t count = reader.read<std::uint16_t>();
    if (!fits(reader, count, sizeof(std::uint16_t), end))
        return;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t face = reader.read<std::uint16_t>();
        if (face >= mesh.faces.size())
            continue;
        mesh.faces[face].material.reset();
        if (material != file.materialOfName.end())
            mesh.faces[face].material = material->second;
    }
}

void readFaces(ByteReader& reader, std::size_t end, const File3ds& file, Mesh3ds& mesh) {
    constexpr std::size_t faceSize = 4 * sizeof(std::uint16_t);
    const std::size_t count = reader.read<std::uint16_t>();
    if (!fits(reader, count, faceSize, end))
        return;
    mesh.faces.assign(count, Face3ds());
    for (Face3ds& face : mesh.faces) {
        for (std::uint16_t& corner : face.corners)
            corner = reader.read<std::uint16_t>();
        // Which edges a modeller shows.
        reader.read<std::uint16_t>();
    }
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (kind == FaceMaterial) {
            readFaceMaterial(reader, chunkEnd, file, mesh);
        } else if (kind == SmoothingGroups &&
                   fits(reader, mesh.faces.size(), sizeof(std::uint32_t), chunkEnd)) {
            for (Face3ds& face : mesh.faces)
                face.smoothingGroup = reader.read<std::uint32_t>();
        }
    });
}

void readPoints(ByteReader& reader, std::size_t end, Mesh3ds& mesh) {
    const std::size_t count = reader.read<std::uint16_t>();
    if (!fits(reader, count, 3 * sizeof(float), end))
        return;
    mesh.vertices.resize(count);
    for (osg::Vec3& vertex : mesh.vertices)
        vertex = vectorAt(reader);
    if (!mesh.textureCoordinates.empty())
        mesh.textureCoordinates.resize(count);
}

void readTextureVertices(ByteReader& reader, std::size_t end, Mesh3ds& mesh) {
    const std::size_t count = reader.read<std::uint16_t>();
    if (!fits(reader, count, 2 * sizeof(float), end))
        return;
    const std::size_t vertices = std::max(count, mesh.vertices.size());
    mesh.vertices.resize(vertices);
    mesh.textureCoordinates.resize(vertices);
    for (std::size_t i = 0; i < count; ++i) {
        mesh.textureCoordinates[i].x() = reader.read<float>();
        mesh.textureCoordinates[i].y() = reader.read<float>();
    }
}

void readMatrix(ByteReader& reader, osg::Matrixf& matrix) {
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            matrix(row, column) = reader.read<float>();
}

/// The sign tells whether the matrix mirrors.
double determinant(const osg::Matrixf& matrix) {
    const osg::Vec3d x(matrix(0, 0), matrix(0, 1), matrix(0, 2));
    const osg::Vec3d y(matrix(1, 0), matrix(1, 1), matrix(1, 2));
    const osg::Vec3d z(matrix(2, 0), matrix(2, 1), matrix(2, 2));
    return x * (y ^ z);
}

/// A mesh that was mirrored stands in the file as if it hadn't been along its own x-axis.
void mirror(Mesh3ds& mesh) {
    osg::Matrixd flipped(mesh.matrix);
    for (int column = 0; column < 4; ++column)
        flipped(0, column) = -flipped(0, column);
    const osg::Matrixd mirrored = osg::Matrixd::inverse(osg::Matrixd(mesh.matrix)) * flipped;
    for (osg::Vec3& vertex : mesh.vertices)
        vertex = osg::Vec3(osg::Vec3d(vertex) * mirrored);
}

Mesh3ds readMesh(ByteReader& reader, std::size_t end, const File3ds& file) {
    Mesh3ds mesh;
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case MeshMatrix:
            readMatrix(reader, mesh.matrix);
            break;
        case PointArray:
            readPoints(reader, chunkEnd, mesh);
            break;
        case FaceArray:
            readFaces(reader, chunkEnd, file, mesh);
            break;
        case TextureVertices:
            readTextureVertices(reader, chunkEnd, mesh);
            break;
        default:
            break;
        }
    });
    if (determinant(mesh.matrix) < 0.0)
        mirror(mesh);
    return mesh;
}

void readModelData(ByteReader& reader, std::size_t end, File3ds& file) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (kind == MaterialEntry) {
            file.materials.push_back(readMaterial(reader, chunkEnd));
            file.materialOfName.emplace(file.materials.back().name, file.materials.size() - 1);
        } else if (kind == NamedObject) {
            const std::string name = nameAt(reader);
            forEachChunk(reader, chunkEnd, [&](std::uint16_t part, std::size_t partEnd) {
                if (part != TriangleObject)
                    return;
                file.meshes.push_back(readMesh(reader, partEnd, file));
                file.meshes.back().name = name;
                file.meshOfName.emplace(name, file.meshes.size() - 1);
            });
        }
    });
}

/// Passes over what says how a key is approached; it has a number for each of its lowest bits.
void skipEasing(ByteReader& reader) {
    constexpr unsigned int easings = 5;
    const unsigned int flags = reader.read<std::uint16_t>();
    for (unsigned int i = 0; i < easings; ++i)
        if ((flags & (1u << i)) != 0)
            reader.read<float>();
}

Track readTrack(ByteReader& reader, std::size_t end, bool ofTurns) {
    reader.read<std::uint16_t>();
    reader.read<std::uint32_t>();
    reader.read<std::uint32_t>();
    const std::size_t count = reader.read<std::uint32_t>();
    constexpr std::size_t leastKey = sizeof(std::int32_t) + sizeof(std::uint16_t);
    if (!fits(reader, count, leastKey, end))
        return {};
    Track track(count);
    for (Key& key : track) {
        key.frame = reader.read<std::int32_t>();
        skipEasing(reader);
        const float angle = ofTurns ? reader.read<float>() : 0.0f;
        key.value = osg::Vec4(vectorAt(reader), angle);
    }
    return track;
}

/// The place of the key that is in force at frame 0: between two keys, the one before. The track
/// has keys.
std::size_t keyAtBegin(const Track& track) {
    if (track.front().frame >= 0)
        return 0;
    const auto later =
        std::find_if(track.begin() + 1, track.end(), [](const Key& key) { return key.frame > 0; });
    return static_cast<std::size_t>(later - track.begin()) - 1;
}

osg::Vec3 vectorAtBegin(const Track& track, const osg::Vec3& otherwise) {
    if (track.empty())
        return otherwise;
    const osg::Vec4& value = track[keyAtBegin(track)].value;
    return {value.x(), value.y(), value.z()};
}

Turn turnAbout(const osg::Vec4& axisAndAngle) {
    const float x = axisAndAngle.x();
    const float y = axisAndAngle.y();
    const float z = axisAndAngle.z();
    const double length = std::sqrt(static_cast<double>(x * x + y * y + z * z));
    if (length < leastAxis)
        return {0.0f, 0.0f, 0.0f, 1.0f};
    // Angles of the file turn clockwise.
    const double half = -0.5 * static_cast<double>(axisAndAngle.w());
    const auto sine = static_cast<float>(std::sin(half) / length);
    return {sine * x, sine * y, sine * z, static_cast<float>(std::cos(half))};
}

/// First `second`, then `first`.
Turn product(const Turn& a, const Turn& b) {
    return {a.w() * b.x() + a.x() * b.w() + a.y() * b.z() - a.z() * b.y(),
            a.w() * b.y() + a.y() * b.w() + a.z() * b.x() - a.x() * b.z(),
            a.w() * b.z() + a.z() * b.w() + a.x() * b.y() - a.y() * b.x(),
            a.w() * b.w() - a.x() * b.x() - a.y() * b.y() - a.z() * b.z()};
}

/// Each key turns on from the one before it.
Turn turnAtBegin(const Track& track) {
    Turn turn(0.0f, 0.0f, 0.0f, 1.0f);
    if (track.empty())
        return turn;
    const std::size_t last = keyAtBegin(track);
    if (last == 0)
        return turnAbout(track.front().value);
    for (std::size_t i = 0; i <= last; ++i)
        turn = product(turnAbout(track[i].value), turn);
    return turn;
}

/// Scales, then turns, then moves. In single precision and in the order in which the numbers were
/// made, so that matrices that undo each other still do.
osg::Matrixf placement(const osg::Vec3& position, const Turn& turn, const osg::Vec3& scale) {
    const float square =
        turn.x() * turn.x() + turn.y() * turn.y() + turn.z() * turn.z() + turn.w() * turn.w();
    const float factor = std::abs(static_cast<double>(square)) < leastAxis ? 1.0f : 2.0f / square;
    const float xs = turn.x() * factor;
    const float ys = turn.y() * factor;
    const float zs = turn.z() * factor;
    const float wx = turn.w() * xs;
    const float wy = turn.w() * ys;
    const float wz = turn.w() * zs;
    const float xx = turn.x() * xs;
    const float xy = turn.x() * ys;
    const float xz = turn.x() * zs;
    const float yy = turn.y() * ys;
    const float yz = turn.y() * zs;
    const float zz = turn.z() * zs;
    const osg::Vec3 rows[] = {osg::Vec3(1.0f - (yy + zz), xy + wz, xz - wy) * scale.x(),
                              osg::Vec3(xy - wz, 1.0f - (xx + zz), yz + wx) * scale.y(),
                              osg::Vec3(xz + wy, yz - wx, 1.0f - (xx + yy)) * scale.z(), position};
    osg::Matrixf matrix;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 3; ++column)
            matrix(row, column) = rows[row][column];
    return matrix;
}

/// A node as it stands in the file.
struct RawNode {
    Node3ds node;
    std::uint16_t id = 0;
    std::uint16_t parentId = noParent;
    Track position;
    Track rotation;
    Track scale;
};

RawNode readNode(ByteReader& reader, std::size_t end, bool isObject, std::size_t place) {
    RawNode raw;
    raw.node.showsMesh = isObject;
    raw.id = static_cast<std::uint16_t>(place);
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case NodeId:
            raw.id = reader.read<std::uint16_t>();
            break;
        case NodeHeader:
            raw.node.name = nameAt(reader);
            reader.read<std::uint32_t>();
            raw.parentId = reader.read<std::uint16_t>();
            break;
        case InstanceName:
            if (isObject)
                raw.node.instanceName = nameAt(reader);
            break;
        case Pivot:
            if (isObject)
                raw.node.pivot = vectorAt(reader);
            break;
        case PositionTrack:
            raw.position = readTrack(reader, chunkEnd, false);
            break;
        case RotationTrack:
            if (isObject)
                raw.rotation = readTrack(reader, chunkEnd, true);
            break;
        case ScaleTrack:
            if (isObject)
                raw.scale = readTrack(reader, chunkEnd, false);
            break;
        default:
            break;
        }
    });
    raw.node.matrix = placement(vectorAtBegin(raw.position, osg::Vec3()), turnAtBegin(raw.rotation),
                                vectorAtBegin(raw.scale, osg::Vec3(1.0f, 1.0f, 1.0f)));
    return raw;
}

bool isNode(std::uint16_t kind) {
    return kind >= AmbientNode && kind <= SpotlightNode;
}

void readKeyFrames(ByteReader& reader, std::size_t end, std::vector<RawNode>& nodes) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (!isNode(kind))
            return;
        nodes.push_back(readNode(reader, chunkEnd, kind == ObjectNode, nodes.size()));
        // What gives light all around has no place.
        if (kind == AmbientNode)
            nodes.back().node.matrix.makeIdentity();
    });
}

/// Puts nodes below their parents, which may come after them. One whose parent isn't there is a
/// root.
void linkNodes(std::vector<RawNode>& raw, File3ds& file) {
    using Row = std::pair<std::uint16_t, std::size_t>;
    std::vector<Row> placeOfId;
    for (std::size_t i = 0; i < raw.size(); ++i)
        placeOfId.emplace_back(raw[i].id, i);
    std::sort(placeOfId.begin(), placeOfId.end());
    for (RawNode& one : raw)
        file.nodes.push_back(std::move(one.node));
    for (std::size_t i = 0; i < raw.size(); ++i) {
        const auto parent = std::lower_bound(placeOfId.begin(), placeOfId.end(),
                                             Row(raw[i].parentId, std::size_t{0}));
        if (raw[i].parentId == noParent || parent == placeOfId.end() ||
            parent->first != raw[i].parentId) {
            file.roots.push_back(i);
            continue;
        }
        file.nodes[i].parent = parent->second;
        file.nodes[parent->second].children.push_back(i);
    }
}

/// Turns the matrices of nodes from their parents' frame into the world's. False where not all can
/// be reached, which happens in a circle, or some lie too deep.
bool placeNodes(File3ds& file) {
    struct Visit {
        std::size_t node;
        std::size_t depth;
    };
    std::vector<Visit> open;
    for (const std::size_t root : file.roots)
        open.push_back({root, 1});
    std::size_t reached = 0;
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        if (visit.depth > deepestNode)
            return false;
        ++reached;
        Node3ds& node = file.nodes[visit.node];
        if (node.parent)
            node.matrix = node.matrix * file.nodes[*node.parent].matrix;
        for (const std::size_t child : node.children)
            open.push_back({child, visit.depth + 1});
    }
    return reached == file.nodes.size();
}

} // namespace

std::optional<File3ds> parse3ds(std::string_view bytes) {
    File3ds file;
    std::vector<RawNode> nodes;
    ByteReader reader(bytes);
    const ChunkHeader3ds whole = readChunkHeader3ds(reader, bytes.size());
    if (whole.kind == ModelData)
        readModelData(reader, whole.end, file);
    else if (whole.kind == ModelFile || whole.kind == LibraryFile || whole.kind == ProjectFile)
        forEachChunk(reader, whole.end, [&](std::uint16_t kind, std::size_t end) {
            if (kind == ModelData)
                readModelData(reader, end, file);
            else if (kind == KeyFrameData)
                readKeyFrames(reader, end, nodes);
        });
    else
        return std::nullopt;
    if (reader.failed())
        return std::nullopt;
    linkNodes(nodes, file);
    if (!placeNodes(file))
        return std::nullopt;
    return file;
}

} // namespace orbisk
