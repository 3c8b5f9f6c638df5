#pragma once

#include "measure/Prefetch.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orbisk {

/// A line as boxes are tested against it, in the tree's units; places on it are told in these from
/// its origin on.
struct BoxLine {
    std::array<float, 3> origin;
    std::array<float, 3> inverse;         ///< of the direction
    std::array<std::size_t, 3> nearBound; ///< which bound of a box is met first
    std::array<std::size_t, 3> farBound;
    float padding;        ///< of every box
    float paddingPerGain; ///< of a box by its node's gain
};

/// A node of a tree of boxes, two lines of cache. The bounds of its children are steps of a grid
/// over the node's own box.
struct alignas(64) BoxNode {
    /// Children of a node.
    static constexpr std::size_t width = 8;
    /// The last step of the grid.
    static constexpr float lastStep = 255.0f;

    using Steps = std::array<std::uint8_t, width>;
    using Places = std::array<float, width>;

    std::array<Steps, 6> bounds; ///< of each child: low x, y, z, high x, y, z
    std::array<float, 3> low;    ///< where the grid begins
    std::array<float, 3> step;
    float gain;                             ///< boxes are padded by that times a line's figure
    std::uint8_t children;                  ///< how many there are
    std::array<std::uint8_t, width> count;  ///< a child's triangles; 0: it is a node
    std::array<std::uint32_t, width> first; ///< a child's node, triangle or place of it

    /// Has the processor fetch all of it.
    void fetch() const {
        prefetch(this);
        prefetch(&first);
    }

    /// Which children's boxes, padded, the line meets before `limit`.
    /// @param begins becomes where on the line each child may begin at the earliest.
    /// @return a bit for each child, the lowest for the first.
    unsigned int meet(const BoxLine& line, float limit, Places& begins) const;

    /// The same without the processor's vector instructions.
    unsigned int meetPortably(const BoxLine& line, float limit, Places& begins) const;
};

} // namespace orbisk
