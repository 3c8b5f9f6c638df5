#pragma once

#include "measure/PickRay.h"
#include "measure/TriangleTest.h"

#include <osg/Vec3d>

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
/// plus what the test against the box itself rounds. Each node keeps the largest g below each of
/// its children; where the denominator gets small it is infinite, and the child is always entered.
///
/// Boxes are tested in single precision, in units of the tree's size and relative to a point of it,
/// and the line is taken from where it is nearest to that: rounding is then in proportion to the
/// tree, wherever in the world it and the ray's origin are.
///
/// Triangles that follow each other and lie together, as neighbours in a mesh mostly do, form runs.
/// The runs are sorted along a curve of cells that halve each other, the longer side first, and the
/// tree is read off that order. Most leaves are one run; others list the triangles of several.
/// Boxes are made from the leaves up.
///
/// Immutable once built; may be read by several threads.
class TriangleTree {
public:
    /// Gives a triangle by its number.
    using Source = std::function<Triangle(std::uint32_t number)>;

    /// A tree without triangles.
    TriangleTree() = default;

    /// Builds the tree of the triangles 0 to `count` - 1, asked for in that order. Those that
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
        std::array<std::uint32_t, mostWaiting> waiting;
        waiting[0] = 0;
        std::size_t count = 1;
        while (count > 0) {
            const Node& node = m_nodes[waiting[--count]];
            const std::array<bool, width> met = meets(node, line);
            for (std::size_t i = 0; i < width; ++i) {
                if (!met[i])
                    continue;
                const std::uint32_t first = node.first[i];
                const std::uint32_t triangles = node.count[i] & ~listed;
                if (triangles == 0)
                    waiting[count++] = first;
                for (std::uint32_t k = first; k < first + triangles; ++k)
                    visit((node.count[i] & listed) == 0 ? k : m_numbers[k]);
            }
        }
    }

    /// What the tree takes in memory.
    std::size_t bytes() const;

private:
    class Builder;

    /// Children of a node.
    static constexpr std::size_t width = 4;
    /// As deep as a tree gets: one level for each bit of a code, and of a number of triangles.
    static constexpr std::size_t mostLevels = 64;
    static constexpr std::size_t mostWaiting = mostLevels * (width - 1) + 1;

    /// Set in a leaf's count where its triangles do not follow each other, but stand in a list.
    static constexpr std::uint8_t listed = 0x80;

    using Lane = std::array<float, width>;

    /// The boxes of four children side by side. A child that is not there has an empty one.
    struct alignas(64) Node {
        std::array<Lane, 6> bounds;             ///< low x, y, z, high x, y, z
        std::array<std::uint32_t, width> first; ///< a child's node, triangle or place of it
        std::array<std::uint16_t, width> gain;  ///< upper half of the float that is g, rounded up
        std::array<std::uint8_t, width> count;  ///< a child's triangles; 0: it is a node
    };

    /// A line as boxes are tested against it, in the tree's units.
    struct Line {
        std::array<float, 3> origin;
        std::array<float, 3> inverse;         ///< of the direction
        std::array<std::size_t, 3> nearBound; ///< which bound of a box is met first
        std::array<std::size_t, 3> farBound;
        float padding; ///< of every box
        float paddingPerGain;
    };

    Line makeLine(const PickRay& ray) const;
    static std::array<bool, width> meets(const Node& node, const Line& line);

    std::vector<Node> m_nodes;            ///< the root first
    std::vector<std::uint32_t> m_numbers; ///< the list
    std::vector<std::uint32_t> m_always;  ///< triangles that fit into no box
    osg::Vec3d m_origin;                  ///< of the tree's coordinates
    double m_unit = 1.0;                  ///< of the tree's coordinates; none is beyond one
    double m_longestEdge = 0.0;           ///< of those with a finite g
};

} // namespace orbisk
