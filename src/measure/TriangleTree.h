#pragma once

#include "measure/PickRay.h"
#include "measure/TriangleTest.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace orbisk {

/// A bounding volume hierarchy over numbered triangles. It holds numbers and boxes only: for a line
/// it names the triangles that `intersect` may find to be hit, and leaves the test to the caller.
///
/// It never leaves one out, whatever the rounding. `intersect` may accept a line that passes a
/// triangle by; by how much is bounded as follows (e: half the distance from 1 to the next double;
/// L: the longest edge; T: the distance from the origin to the farthest point of the tree; the
/// direction has length one). The errors of the determinant, of its product with u and of that with
/// v are below 8 e L^2, 8 e L T and 8 e L T. So the point where the line meets the plane is, in
/// barycentric coordinates, no farther outside than 8 e L (L + 3 T) / d, where d, the exact
/// determinant, is at least the test's limit less 8 e L^2. The line therefore meets the triangle's
/// box when that is padded by g (L + 3 T) with
///
///     g = 8 e L^2 / (limit - 8 e L^2)
///
/// plus a few e T for what is rounded besides. Each node keeps the largest g below it; where the
/// denominator gets small it is infinite, and the node is always entered.
///
/// Immutable once built; may be read by several threads.
class TriangleTree {
public:
    /// Gives a triangle by its number.
    using Source = std::function<Triangle(std::uint32_t number)>;

    /// A tree without triangles.
    TriangleTree() = default;

    /// Builds the tree of the triangles 0 to `count` - 1, each asked for once. Those that
    /// `intersect` never finds to be hit are left out. `source` may throw: nothing is built then.
    /// @param cancelled is looked at now and then from the calling thread.
    /// @return nothing if it was cancelled, or if a number of triangles that makes a tree useless
    /// has coordinates that are infinite, no numbers, or beyond all use.
    static std::optional<TriangleTree> build(std::uint32_t count, const Source& source,
                                             const std::atomic<bool>& cancelled);

    /// Whether candidates can be told for this ray: for one that has a direction of length one and
    /// an origin of usable coordinates.
    static bool serves(const PickRay& ray);

    /// Calls `visit(number)` for every triangle that `intersect` may find to be hit by the line of
    /// `ray`, which must be one that is served, on either side of its origin. In no order, each
    /// once.
    template <typename Visit>
    void forEachCandidate(const PickRay& ray, Visit&& visit) const {
        for (const std::uint32_t number : m_always)
            visit(number);
        if (m_nodes.empty())
            return;
        const Line line = makeLine(ray);
        std::array<std::uint32_t, deepest> waiting;
        std::size_t count = 0;
        if (meets(m_nodes.front(), line))
            waiting[count++] = 0;
        while (count > 0) {
            const Node& node = m_nodes[waiting[--count]];
            if (node.count > 0) {
                for (std::uint32_t i = node.first; i < node.first + node.count; ++i)
                    visit(m_numbers[i]);
                continue;
            }
            for (const std::uint32_t child : {node.first + 1, node.first})
                if (meets(m_nodes[child], line))
                    waiting[count++] = child;
        }
    }

    /// What the tree takes in memory.
    std::size_t bytes() const;

private:
    class Builder;

    /// More than the levels of any tree: from `medianDepth` on each level halves the triangles.
    static constexpr std::size_t deepest = 128;
    static constexpr int medianDepth = 64;

    struct Node {
        std::array<float, 3> low;
        std::array<float, 3> high;
        std::uint32_t first; ///< of its triangles; of its two children where it has none
        std::uint16_t count; ///< of its triangles
        std::uint16_t gain;  ///< the upper half of the float that is g, rounded up
    };

    /// A ray as the boxes are tested against it.
    struct Line {
        std::array<double, 3> origin;
        std::array<double, 3> inverse; ///< of the direction
        double padding;                ///< of every box
        double paddingPerGain;
    };

    Line makeLine(const PickRay& ray) const;
    static bool meets(const Node& node, const Line& line);

    std::vector<Node> m_nodes; ///< the root first, siblings side by side
    std::vector<std::uint32_t> m_numbers;
    std::vector<std::uint32_t> m_always; ///< triangles that fit into no box
    double m_longestEdge = 0.0;          ///< of those with a finite g
};

} // namespace orbisk
