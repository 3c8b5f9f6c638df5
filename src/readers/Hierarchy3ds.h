#pragma once

#include "readers/ByteReader.h"

#include <osg/Matrixf>
#include <osg/Vec3>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orbisk {

/// A node of the hierarchy in a 3DS file, which may show a mesh of its name.
struct Node3ds {
    bool showsMesh = false; ///< else it is a light, a camera or what they look at
    std::string name;
    std::string instanceName;
    osg::Vec3 pivot;
    osg::Matrixf matrix; ///< to the world, at the begin of the animation
    std::optional<std::size_t> parent;
    std::vector<std::size_t> children;
};

/// The nodes of a 3DS file.
struct Hierarchy3ds {
    std::vector<Node3ds> nodes;
    std::vector<std::size_t> roots; ///< the nodes without a parent
};

/// A node as the file has it: `matrix` leads to the frame of its parent, which is named, not found.
struct UnlinkedNode3ds {
    static constexpr std::uint16_t noParent = 0xFFFF;

    Node3ds node;
    std::uint16_t id = 0;
    std::uint16_t parentId = noParent;
};

/// Adds the nodes of a key-frame chunk, which ends at `end`, to `nodes`, in their order.
void readKeyFrames3ds(ByteReader& reader, std::size_t end, std::vector<UnlinkedNode3ds>& nodes);

/// Puts nodes below their parents, which may come after them; one whose parent isn't there is a
/// root. Nothing where not all can be reached from roots, which happens in a circle, or some lie
/// deeper than any modeller puts them.
std::optional<Hierarchy3ds> linkNodes3ds(std::vector<UnlinkedNode3ds> unlinked);

} // namespace orbisk
