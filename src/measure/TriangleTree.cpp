#include "measure/TriangleTree.h"

#include "measure/CellOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orbisk {

namespace {

constexpr double roundoff = std::numeric_limits<double>::epsilon() / 2;
constexpr float infinity = std::numeric_limits<float>::infinity();

/// See the class for where these come from; what the derivation leaves over is slack.
constexpr double errorFactor = 8 * roundoff;
constexpr double distancesPerGain = 3.0;
/// Where the error of the determinant is more than this part of its limit, no bound is any use.
constexpr double largestErrorPart = 0.5;

/// What moving the line, and the test in single precision, round at most is well below these parts:
/// of the distance between the ray's origin and the tree, and of the tree.
constexpr double distancePadding = 64 * roundoff;
constexpr double treePadding = 64 * static_cast<double>(std::numeric_limits<float>::epsilon()) / 2;
/// A line that is nearly along a plane of axes drifts off it by less than the padding when its
/// direction is taken to be that much.
constexpr double smallestDirection = 1e-12;

/// Nothing that is computed from coordinates up to here overflows.
constexpr double largestCoordinate = 1e30;
/// A direction counts as of length one when its square differs by no more.
constexpr double unitTolerance = 1e-9;

/// So many triangles without a box, and a part of all of them, are still tested one by one.
constexpr std::size_t fewWithoutBox = 64;
constexpr std::size_t partWithoutBox = 256;

constexpr std::uint32_t trianglesBetweenLooks = 4096;

bool isUsable(double coordinate) {
    return std::abs(coordinate) <= largestCoordinate;
}

bool isUsable(const osg::Vec3d& point) {
    return isUsable(point.x()) && isUsable(point.y()) && isUsable(point.z());
}

bool isUsable(const Triangle& triangle) {
    return isUsable(triangle.a) && isUsable(triangle.b) && isUsable(triangle.c);
}

float roundedDown(double value) {
    constexpr float largest = std::numeric_limits<float>::max();
    if (std::abs(value) > static_cast<double>(largest))
        return value > 0 ? largest : -infinity;
    const auto nearest = static_cast<float>(value);
    return static_cast<double>(nearest) > value ? std::nextafter(nearest, -infinity) : nearest;
}

float roundedUp(double value) {
    return -roundedDown(-value);
}

double longestEdge2(const Triangle& triangle) {
    return std::max(
        std::max((triangle.b - triangle.a).length2(), (triangle.c - triangle.a).length2()),
        (triangle.c - triangle.b).length2());
}

/// Whether a direction of length one can give the triangle a determinant that counts.
bool canBeHit(const Triangle& triangle, double edge2) {
    const double smallest = smallestDeterminant * (1 - unitTolerance) - 2 * errorFactor * edge2;
    return smallest <= 0 || ((triangle.b - triangle.a) ^ (triangle.c - triangle.a)).length2() >=
                                smallest * smallest * (1 - unitTolerance);
}

/// Whether the g of triangles with this longest edge is finite.
bool hasBound(double edge2) {
    return errorFactor * edge2 <= largestErrorPart * smallestDeterminant;
}

/// The g of triangles with this longest edge.
float gainOf(double edge2) {
    const double error = errorFactor * edge2;
    return hasBound(edge2) ? roundedUp(error / (smallestDeterminant - error)) : infinity;
}

/// The box of the triangles of a run, while there come more.
struct OpenRun {
    osg::Vec3d low;
    osg::Vec3d high;
    double edge2 = 0.0;
    std::uint32_t first = 0;
    std::uint32_t count = 0;
};

double halfGirth(const osg::Vec3d& low, const osg::Vec3d& high) {
    const osg::Vec3d size = high - low;
    return size.x() + size.y() + size.z();
}

OpenRun runOf(std::uint32_t number, const Triangle& triangle, double edge2) {
    OpenRun run{triangle.a, triangle.a, edge2, number, 1};
    for (int i = 0; i < 3; ++i) {
        run.low[i] = std::min(std::min(triangle.a[i], triangle.b[i]), triangle.c[i]);
        run.high[i] = std::max(std::max(triangle.a[i], triangle.b[i]), triangle.c[i]);
    }
    return run;
}

/// Puts the next triangle into a run, where the box of both is no longer around than theirs
/// together. @return whether it did.
bool join(OpenRun& run, const OpenRun& next, std::uint32_t most) {
    if (run.count == 0 || run.count == most)
        return false;
    osg::Vec3d low;
    osg::Vec3d high;
    for (int i = 0; i < 3; ++i) {
        low[i] = std::min(run.low[i], next.low[i]);
        high[i] = std::max(run.high[i], next.high[i]);
    }
    if (halfGirth(low, high) > halfGirth(run.low, run.high) + halfGirth(next.low, next.high))
        return false;
    run = {low, high, std::max(run.edge2, next.edge2), run.first, run.count + 1};
    return true;
}

} // namespace

class TriangleTree::Builder {
public:
    Builder(TriangleTree& tree, const std::atomic<bool>& cancelled)
        : m_tree(tree), m_cancelled(cancelled) {}

    /// @return whether there is a tree.
    bool build(std::uint32_t count, const Source& source) {
        if (!collect(count, source))
            return false;
        if (m_runs.empty())
            return true;
        m_tree.m_longestEdge = std::sqrt(m_longestEdge2);
        m_tree.m_unit = std::exp2(std::ceil(std::log2(static_cast<double>(m_largest))));
        m_toUnit = static_cast<float>(1.0 / m_tree.m_unit);
        m_order = CellOrder::of(m_runs, m_cancelled);
        m_tree.m_nodes.reserve(m_runs.size());
        buildNode({0, static_cast<std::uint32_t>(m_runs.size())});
        if (m_cancelled)
            return false;
        m_tree.m_nodes.shrink_to_fit();
        m_tree.m_numbers.shrink_to_fit();
        return true;
    }

private:
    /// A part of the order, from `begin` to before `end`.
    struct Range {
        std::uint32_t begin;
        std::uint32_t end;

        std::uint32_t count() const { return end - begin; }
    };

    struct Child {
        Range range;
        bool isLeaf;
    };

    using Children = std::array<Child, BoxNode::width>;

    bool collect(std::uint32_t count, const Source& source) {
        m_runs.reserve(count / trianglesPerLeaf);
        for (std::uint32_t number = 0; number < count; ++number) {
            if (number % trianglesBetweenLooks == 0 && m_cancelled)
                return false;
            add(number, source(number));
        }
        closeRun();
        return m_tree.m_always.size() <= fewWithoutBox + count / partWithoutBox;
    }

    void add(std::uint32_t number, const Triangle& triangle) {
        const bool usable = isUsable(triangle);
        const double edge2 = usable ? longestEdge2(triangle) : 0.0;
        if (!usable || !canBeHit(triangle, edge2)) {
            closeRun();
            if (!usable)
                m_tree.m_always.push_back(number);
            return;
        }
        if (hasBound(edge2))
            m_longestEdge2 = std::max(m_longestEdge2, edge2);
        const OpenRun next = runOf(number, triangle, edge2);
        if (!join(m_open, next, trianglesPerLeaf)) {
            closeRun();
            m_open = next;
        }
    }

    void closeRun() {
        if (m_open.count == 0)
            return;
        if (m_runs.empty())
            m_tree.m_origin = m_open.low;
        const osg::Vec3d low = m_open.low - m_tree.m_origin;
        const osg::Vec3d high = m_open.high - m_tree.m_origin;
        TriangleRun run{};
        for (int i = 0; i < 3; ++i) {
            const auto axis = static_cast<std::size_t>(i);
            run.low[axis] = roundedDown(low[i]);
            run.high[axis] = roundedUp(high[i]);
            m_largest = std::max(m_largest, std::max(-run.low[axis], run.high[axis]));
        }
        run.edge2 = roundedUp(m_open.edge2);
        run.first = m_open.first;
        run.count = m_open.count;
        m_runs.push_back(run);
        m_open.count = 0;
    }

    const TriangleRun& runAt(std::uint32_t place) const { return m_runs[m_order.at(place)]; }

    /// Builds the node of a part, after those before. @return what its box is.
    Box buildNode(const Range& range) {
        const std::size_t place = m_tree.m_nodes.size();
        m_tree.m_nodes.emplace_back();
        BoxNode node{};
        Children children;
        children[0] = childOf(range);
        std::array<Box, BoxNode::width> boxes;
        Box whole;
        const std::size_t count = split(children);
        for (std::size_t i = 0; i < count && !m_cancelled; ++i) {
            const Child& child = children[i];
            if (child.isLeaf) {
                boxes[i] = boxOf(child.range);
                setTriangles(node, i, child.range);
            } else {
                node.first[i] = static_cast<std::uint32_t>(m_tree.m_nodes.size());
                boxes[i] = buildNode(child.range);
            }
            whole.add(boxes[i]);
        }
        node.children = static_cast<std::uint8_t>(count);
        setGrid(node, whole);
        for (std::size_t i = 0; i < count; ++i)
            setBounds(node, i, boxes[i]);
        m_tree.m_nodes[place] = node;
        return whole;
    }

    /// Splits the largest of `children`, at first their only one, until there are as many as go
    /// into a node, or only leaves. @return how many there are.
    std::size_t split(Children& children) const {
        std::size_t count = 1;
        while (count < BoxNode::width) {
            Child* largest = nullptr;
            for (std::size_t i = 0; i < count; ++i)
                if (!children[i].isLeaf &&
                    (!largest || children[i].range.count() > largest->range.count()))
                    largest = &children[i];
            if (!largest)
                break;
            const Range range = largest->range;
            const std::uint32_t middle = m_order.middleOf(range.begin, range.end);
            *largest = childOf({range.begin, middle});
            children[count++] = childOf({middle, range.end});
        }
        return count;
    }

    Child childOf(const Range& range) const { return {range, isLeaf(range)}; }

    bool isLeaf(const Range& range) const {
        if (range.count() > trianglesPerLeaf)
            return false;
        std::uint32_t triangles = 0;
        for (std::uint32_t i = range.begin; i < range.end; ++i)
            triangles += runAt(i).count;
        return triangles <= trianglesPerLeaf;
    }

    Box boxOf(const Range& leaf) const {
        Box box;
        for (std::uint32_t i = leaf.begin; i < leaf.end; ++i)
            box.add(runAt(i));
        return box;
    }

    void setTriangles(BoxNode& node, std::size_t child, const Range& leaf) {
        if (leaf.count() == 1) {
            node.first[child] = runAt(leaf.begin).first;
            node.count[child] = static_cast<std::uint8_t>(runAt(leaf.begin).count);
            return;
        }
        const std::size_t first = m_tree.m_numbers.size();
        for (std::uint32_t i = leaf.begin; i < leaf.end; ++i)
            for (std::uint32_t k = 0; k < runAt(i).count; ++k)
                m_tree.m_numbers.push_back(runAt(i).first + k);
        node.first[child] = static_cast<std::uint32_t>(first);
        node.count[child] = static_cast<std::uint8_t>(m_tree.m_numbers.size() - first) | listed;
    }

    void setGrid(BoxNode& node, const Box& box) const {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            node.low[axis] = box.low[axis] * m_toUnit;
            const double side =
                (static_cast<double>(box.high[axis]) - static_cast<double>(box.low[axis])) /
                m_tree.m_unit;
            node.step[axis] = roundedUp(side / static_cast<double>(BoxNode::lastStep));
        }
        node.gain = gainOf(static_cast<double>(box.edge2));
    }

    /// Rounds a child's box to the grid, outwards.
    void setBounds(BoxNode& node, std::size_t child, const Box& box) const {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const float step = node.step[axis];
            // What is flatter lies within the padding.
            const float perStep = step >= std::numeric_limits<float>::min() ? 1.0f / step : 0.0f;
            const float low = (box.low[axis] * m_toUnit - node.low[axis]) * perStep;
            const float high = (box.high[axis] * m_toUnit - node.low[axis]) * perStep;
            const auto wholeSteps = static_cast<std::uint8_t>(std::min(high, BoxNode::lastStep));
            const bool isBeyond = static_cast<float>(wholeSteps) < high;
            node.bounds[axis][child] = static_cast<std::uint8_t>(low);
            node.bounds[axis + 3][child] = static_cast<std::uint8_t>(
                wholeSteps + (isBeyond && wholeSteps < BoxNode::lastStep ? 1 : 0));
        }
    }

    TriangleTree& m_tree;
    const std::atomic<bool>& m_cancelled;
    OpenRun m_open;
    std::vector<TriangleRun> m_runs;
    double m_longestEdge2 = 0.0; ///< of those with a finite g
    float m_largest = 0.0f;      ///< coordinate of any box
    float m_toUnit = 1.0f;
    CellOrder m_order;
};

std::optional<TriangleTree> TriangleTree::build(std::uint32_t count, const Source& source,
                                                const std::atomic<bool>& cancelled) {
    TriangleTree tree;
    if (!Builder(tree, cancelled).build(count, source))
        return std::nullopt;
    return tree;
}

bool TriangleTree::serves(const PickRay& ray) {
    return isUsable(ray.origin) && std::abs(ray.direction.length2() - 1.0) <= unitTolerance;
}

std::size_t TriangleTree::bytes() const {
    return sizeof *this + m_nodes.capacity() * sizeof(BoxNode) +
           (m_numbers.capacity() + m_always.capacity()) * sizeof(std::uint32_t);
}

TriangleTree::Line TriangleTree::makeLine(const PickRay& ray) const {
    const osg::Vec3d toOrigin = ray.origin - m_origin;
    const double originPlace = toOrigin * ray.direction;
    const osg::Vec3d start = (toOrigin - ray.direction * originPlace) / m_unit;
    // No coordinate of the tree is beyond its unit, so none of its points beyond two.
    const double distance = toOrigin.length() + 2 * m_unit;
    Line line{};
    for (int i = 0; i < 3; ++i) {
        const auto axis = static_cast<std::size_t>(i);
        const double direction = std::copysign(
            std::max(std::abs(ray.direction[i]), smallestDirection), ray.direction[i]);
        line.origin[axis] = static_cast<float>(start[i]);
        line.inverse[axis] = static_cast<float>(1.0 / direction);
        line.nearBound[axis] = direction > 0 ? axis : axis + 3;
        line.farBound[axis] = direction > 0 ? axis + 3 : axis;
    }
    line.padding = static_cast<float>(treePadding * std::max(1.0, start.length()) +
                                      distancePadding * distance / m_unit);
    line.paddingPerGain =
        static_cast<float>((m_longestEdge + distancesPerGain * distance) / m_unit);
    line.originPlace = originPlace;
    line.unit = m_unit;
    return line;
}

float TriangleTree::Line::placeOf(double distance) const {
    constexpr auto largest = static_cast<double>(std::numeric_limits<float>::max());
    const double place = (distance + originPlace) / unit;
    if (place > largest)
        return infinity;
    return static_cast<float>(std::max(place, -largest));
}

void TriangleTree::enter(std::uint32_t place, const Line& line, float end, Agenda& agenda) const {
    const BoxNode& node = m_nodes[place];
    BoxNode::Places begins;
    unsigned int met = node.meet(line, end, begins);
    const std::size_t below = agenda.size();
    for (std::size_t i = 0; met != 0; ++i, met >>= 1u)
        if (met % 2 == 1) {
            agenda.insert({begins[i], node.first[i], node.count[i]}, below);
            if (node.count[i] == 0)
                m_nodes[node.first[i]].fetch();
        }
}

} // namespace orbisk
