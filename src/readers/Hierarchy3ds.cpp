#include "readers/Hierarchy3ds.h"

#include "readers/Chunks3ds.h"

#include <osg/Vec4>

#include <algorithm>
#include <cmath>
#include <utility>

namespace orbisk {

namespace {

/// Deeper than this, whatever walks through a scene by calling itself may not come back.
constexpr std::size_t deepestNode = 256;

/// The length below which an axis has no direction.
constexpr double leastAxis = 1e-5;

/// A turn: x, y, z, w.
using Turn = osg::Vec4;

struct Key {
    std::int32_t frame = 0;
    osg::Vec4 value; ///< three numbers, or an axis and the angle about it in radians
};

using Track = std::vector<Key>;

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
    if (!hasRoomFor(reader, count, leastKey, end))
        return {};
    Track track(count);
    for (Key& key : track) {
        key.frame = reader.read<std::int32_t>();
        skipEasing(reader);
        const float angle = ofTurns ? reader.read<float>() : 0.0f;
        key.value = osg::Vec4(readVector3ds(reader), angle);
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

UnlinkedNode3ds readNode(ByteReader& reader, std::size_t end, bool isObject, std::size_t place) {
    UnlinkedNode3ds raw;
    Track position;
    Track rotation;
    Track scale;
    raw.node.showsMesh = isObject;
    raw.id = static_cast<std::uint16_t>(place);
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        switch (kind) {
        case NodeId:
            raw.id = reader.read<std::uint16_t>();
            break;
        case NodeHeader:
            raw.node.name = readName3ds(reader);
            reader.read<std::uint32_t>();
            raw.parentId = reader.read<std::uint16_t>();
            break;
        case InstanceName:
            if (isObject)
                raw.node.instanceName = readName3ds(reader);
            break;
        case Pivot:
            if (isObject)
                raw.node.pivot = readVector3ds(reader);
            break;
        case PositionTrack:
            position = readTrack(reader, chunkEnd, false);
            break;
        case RotationTrack:
            if (isObject)
                rotation = readTrack(reader, chunkEnd, true);
            break;
        case ScaleTrack:
            if (isObject)
                scale = readTrack(reader, chunkEnd, false);
            break;
        default:
            break;
        }
    });
    raw.node.matrix = placement(vectorAtBegin(position, osg::Vec3()), turnAtBegin(rotation),
                                vectorAtBegin(scale, osg::Vec3(1.0f, 1.0f, 1.0f)));
    return raw;
}

bool isNode(std::uint16_t kind) {
    return kind >= AmbientNode && kind <= SpotlightNode;
}

/// Turns the matrices of nodes from their parents' frame into the world's. False where not all can
/// be reached, which happens in a circle, or some lie too deep.
bool placeNodes(Hierarchy3ds& hierarchy) {
    struct Visit {
        std::size_t node;
        std::size_t depth;
    };
    std::vector<Visit> open;
    for (const std::size_t root : hierarchy.roots)
        open.push_back({root, 1});
    std::size_t reached = 0;
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        if (visit.depth > deepestNode)
            return false;
        ++reached;
        Node3ds& node = hierarchy.nodes[visit.node];
        if (node.parent)
            node.matrix = node.matrix * hierarchy.nodes[*node.parent].matrix;
        for (const std::size_t child : node.children)
            open.push_back({child, visit.depth + 1});
    }
    return reached == hierarchy.nodes.size();
}

} // namespace

void readKeyFrames3ds(ByteReader& reader, std::size_t end, std::vector<UnlinkedNode3ds>& nodes) {
    forEachChunk(reader, end, [&](std::uint16_t kind, std::size_t chunkEnd) {
        if (!isNode(kind))
            return;
        nodes.push_back(readNode(reader, chunkEnd, kind == ObjectNode, nodes.size()));
        // What gives light all around has no place.
        if (kind == AmbientNode)
            nodes.back().node.matrix.makeIdentity();
    });
}

std::optional<Hierarchy3ds> linkNodes3ds(std::vector<UnlinkedNode3ds> unlinked) {
    Hierarchy3ds hierarchy;
    using Row = std::pair<std::uint16_t, std::size_t>;
    std::vector<Row> placeOfId;
    for (std::size_t i = 0; i < unlinked.size(); ++i)
        placeOfId.emplace_back(unlinked[i].id, i);
    std::sort(placeOfId.begin(), placeOfId.end());
    for (UnlinkedNode3ds& one : unlinked)
        hierarchy.nodes.push_back(std::move(one.node));
    for (std::size_t i = 0; i < unlinked.size(); ++i) {
        const auto parent = std::lower_bound(placeOfId.begin(), placeOfId.end(),
                                             Row(unlinked[i].parentId, std::size_t{0}));
        if (unlinked[i].parentId == UnlinkedNode3ds::noParent || parent == placeOfId.end() ||
            parent->first != unlinked[i].parentId) {
            hierarchy.roots.push_back(i);
            continue;
        }
        hierarchy.nodes[i].parent = parent->second;
        hierarchy.nodes[parent->second].children.push_back(i);
    }
    if (!placeNodes(hierarchy))
        return std::nullopt;
    return hierarchy;
}

} // namespace orbisk
