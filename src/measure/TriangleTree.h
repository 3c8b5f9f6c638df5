#pragma once

#include "measure/BoxNode.h"
#include "measure/PickRay.h"
#include "measure/TriangleTest.h"

#include <osg/Vec3d>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
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
/// plus what the test against the box itself rounds. Each node keeps the largest g below it; where
/// the denominator gets small it is infinite, and the node's children are always entered.
///
/// The distance that `intersect` tells differs from that of the exact point by the errors of its
/// product with the determinant, below 10 e L^2 T, and of the determinant, below 8 e L^2 T, divided
/// by d, and by e T: less than the same padding. So no hit comes before its box by more than that.
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

    /// Tells `candidates` every triangle that `intersect` may find to be hit by the line of `ray`,
    /// which must be one that is served, on either side of its origin: each once, roughly in the
    /// order in which the line meets them. `candidates.expect(number)` may be called first for one
    /// that is told soon; `candidates.test(number)` returns the distance beyond which hits are of
    /// no use from now on.
    /// @param limit is that distance to begin with. Triangles that `intersect` can find only beyond
    /// may be left out; where it is infinite none are.
    template <typename Candidates>
    void forEachCandidate(const PickRay& ray, double limit, Candidates&& candidates) const {
        for (const std::uint32_t number : m_always)
            limit = candidates.test(number);
        if (m_nodes.empty())
            return;
        const Line line = makeLine(ray);
        float end = line.placeOf(limit);
        Agenda agenda;
        agenda.add({-std::numeric_limits<float>::infinity(), 0, 0});
        while (!agenda.isEmpty()) {
            const Task task = agenda.take();
            if (task.begin > end)
                continue;
            if (task.count == 0) {
                enter(task.first, line, end, agenda);
                continue;
            }
            const Leaf leaf = leafOf(task);
            for (std::uint32_t i = 0; i < leaf.count; ++i)
                candidates.expect(leaf.numbers[i]);
            for (std::uint32_t i = 0; i < leaf.count; ++i)
                limit = candidates.test(leaf.numbers[i]);
            end = line.placeOf(limit);
        }
    }

    /// What the tree takes in memory.
    std::size_t bytes() const;

private:
    class Builder;

    static constexpr std::uint32_t trianglesPerLeaf = 4;
    /// As deep as a tree gets: one level for each bit of a code, and of a number of triangles.
    static constexpr std::size_t mostLevels = 64;
    static constexpr std::size_t mostTasks = mostLevels * (BoxNode::width - 1) + 1;

    /// Set in a leaf's count where its triangles do not follow each other, but stand in a list.
    static constexpr std::uint8_t listed = 0x80;

    /// A child that the line meets.
    struct Task {
        float begin;         ///< where on the line, at the earliest
        std::uint32_t first; ///< as the node has them
        std::uint32_t count;
    };

    struct Leaf {
        std::array<std::uint32_t, trianglesPerLeaf> numbers;
        std::uint32_t count;
    };

    /// What is still to be visited, what begins first on top.
    class Agenda {
    public:
        bool isEmpty() const { return m_count == 0; }
        Task take() { return m_tasks[--m_count]; }
        void add(const Task& task) { m_tasks[m_count++] = task; }

        std::size_t size() const { return m_count; }

        /// Adds it in its place among those above the lowest `below`.
        void insert(const Task& task, std::size_t below) {
            std::size_t place = m_count++;
            for (; place > below && m_tasks[place - 1].begin < task.begin; --place)
                m_tasks[place] = m_tasks[place - 1];
            m_tasks[place] = task;
        }

    private:
        std::size_t m_count = 0;
        std::array<Task, mostTasks> m_tasks;
    };

    /// The line of a ray, and how distances from the ray's origin become places on it.
    struct Line : BoxLine {
        double originPlace; ///< of the ray's origin, in the ray's lengths
        double unit;

        float placeOf(double distance) const;
    };

    Line makeLine(const PickRay& ray) const;

    Leaf leafOf(const Task& task) const {
        Leaf leaf;
        leaf.count = task.count & ~listed;
        for (std::uint32_t i = 0; i < leaf.count; ++i)
            leaf.numbers[i] =
                (task.count & listed) == 0 ? task.first + i : m_numbers[task.first + i];
        return leaf;
    }

    void enter(std::uint32_t place, const Line& line, float end, Agenda& agenda) const;

    std::vector<BoxNode> m_nodes;         ///< the root first
    std::vector<std::uint32_t> m_numbers; ///< the list
    std::vector<std::uint32_t> m_always;  ///< triangles that fit into no box
    osg::Vec3d m_origin;                  ///< of the tree's coordinates
    double m_unit = 1.0;                  ///< of the tree's coordinates; none is beyond one
    double m_longestEdge = 0.0;           ///< of those with a finite g
};

} // namespace orbisk
