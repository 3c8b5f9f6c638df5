#include "measure/TriangleTree.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace orbisk {

namespace {

constexpr double roundoff = std::numeric_limits<double>::epsilon() / 2;
constexpr float infinity = std::numeric_limits<float>::infinity();

/// See the class for where these come from; what the derivation leaves over is slack.
constexpr double errorFactor = 8 * roundoff;
constexpr double edgesPerDistance = 3.0;
constexpr double basePadding = 32 * roundoff;
/// Where the error of the determinant is more than this part of its limit, no bound is any use.
constexpr double largestErrorPart = 0.5;

/// Boxes hold floats, and nothing that is computed from coordinates up to here overflows.
constexpr double largestCoordinate = 1e30;
/// A direction counts as of length one when its square differs by no more.
constexpr double unitTolerance = 1e-9;

/// So many triangles without a box, and a part of all of them, are still tested one by one.
constexpr std::size_t fewWithoutBox = 64;
constexpr std::size_t partWithoutBox = 256;

constexpr std::uint32_t trianglesPerLeaf = 4;
constexpr int mostBins = 16;
constexpr int fewestBins = 8;
constexpr std::size_t itemsForMostBins = 128;
constexpr std::uint32_t itemsBetweenLooks = 4096;

bool isUsable(double coordinate) {
    return std::abs(coordinate) <= largestCoordinate;
}

bool isUsable(const osg::Vec3d& point) {
    return isUsable(point.x()) && isUsable(point.y()) && isUsable(point.z());
}

float roundedDown(double value) {
    const auto nearest = static_cast<float>(value);
    return static_cast<double>(nearest) > value ? std::nextafter(nearest, -infinity) : nearest;
}

float roundedUp(double value) {
    return -roundedDown(-value);
}

double longestEdge2(const Triangle& triangle) {
    return std::max({(triangle.b - triangle.a).length2(), (triangle.c - triangle.a).length2(),
                     (triangle.c - triangle.b).length2()});
}

/// Whether a direction of length one can give the triangle a determinant that counts.
bool canBeHit(const Triangle& triangle, double edge2) {
    const double doubleArea = ((triangle.b - triangle.a) ^ (triangle.c - triangle.a)).length();
    return doubleArea * (1 + unitTolerance) + 2 * errorFactor * edge2 >= smallestDeterminant;
}

/// The g of a triangle.
float gainOf(double edge2) {
    const double error = errorFactor * edge2;
    if (error > largestErrorPart * smallestDeterminant)
        return infinity;
    return roundedUp(error / (smallestDeterminant - error));
}

constexpr unsigned int halfFloatBits = 16;

std::uint16_t upperHalf(float value) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    constexpr std::uint32_t lowerHalf = (1u << halfFloatBits) - 1;
    return static_cast<std::uint16_t>((bits + lowerHalf) >> halfFloatBits);
}

float fromUpperHalf(std::uint16_t half) {
    const std::uint32_t bits = static_cast<std::uint32_t>(half) << halfFloatBits;
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return value;
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
        if (m_items.empty())
            return true;
        m_tree.m_nodes.reserve(m_items.size() / 2 + 1);
        m_tree.m_nodes.emplace_back();
        m_waiting.push_back({0, 0, static_cast<std::uint32_t>(m_items.size()), 0});
        while (!m_waiting.empty()) {
            if (m_cancelled)
                return false;
            const Task task = m_waiting.back();
            m_waiting.pop_back();
            buildNode(task);
        }
        m_tree.m_numbers.reserve(m_items.size());
        for (const Item& item : m_items)
            m_tree.m_numbers.push_back(item.number);
        m_tree.m_nodes.shrink_to_fit();
        return true;
    }

private:
    struct Box {
        std::array<float, 3> low{infinity, infinity, infinity};
        std::array<float, 3> high{-infinity, -infinity, -infinity};
        float gain = 0.0f;

        template <typename Other>
        void add(const Other& other) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], other.low[axis]);
                high[axis] = std::max(high[axis], other.high[axis]);
            }
            gain = std::max(gain, other.gain);
        }

        /// Half its surface.
        float area() const {
            const float x = high[0] - low[0];
            const float y = high[1] - low[1];
            const float z = high[2] - low[2];
            return x * y + y * z + z * x;
        }

        std::size_t longestAxis() const {
            std::size_t longest = 0;
            for (std::size_t axis = 1; axis < 3; ++axis)
                if (high[axis] - low[axis] > high[longest] - low[longest])
                    longest = axis;
            return longest;
        }
    };

    /// A triangle to be sorted in.
    struct Item {
        std::array<float, 3> low;
        std::array<float, 3> high;
        std::uint32_t number;
        float gain;

        /// Twice its middle.
        float center(std::size_t axis) const { return low[axis] + high[axis]; }
    };

    /// A node to be built of the items from `begin` to before `end`.
    struct Task {
        std::uint32_t node;
        std::uint32_t begin;
        std::uint32_t end;
        int depth;
    };

    struct Bin {
        Box box;
        std::uint32_t count = 0;
    };

    /// Sorts items into equal parts of an axis by their middles.
    struct Bins {
        std::size_t axis;
        float start;
        float scale;
        int count;

        int of(const Item& item) const {
            const auto bin = static_cast<int>((item.center(axis) - start) * scale);
            return std::clamp(bin, 0, count - 1);
        }
    };

    bool collect(std::uint32_t count, const Source& source) {
        m_items.reserve(count);
        for (std::uint32_t number = 0; number < count; ++number) {
            if (number % itemsBetweenLooks == 0 && m_cancelled)
                return false;
            add(number, source(number));
        }
        const std::size_t mostWithoutBox = fewWithoutBox + count / partWithoutBox;
        return m_tree.m_always.size() <= mostWithoutBox;
    }

    void add(std::uint32_t number, const Triangle& triangle) {
        if (!isUsable(triangle.a) || !isUsable(triangle.b) || !isUsable(triangle.c)) {
            m_tree.m_always.push_back(number);
            return;
        }
        const double edge2 = longestEdge2(triangle);
        if (!canBeHit(triangle, edge2))
            return;
        Item item{};
        for (int i = 0; i < 3; ++i) {
            const auto axis = static_cast<std::size_t>(i);
            item.low[axis] = roundedDown(std::min({triangle.a[i], triangle.b[i], triangle.c[i]}));
            item.high[axis] = roundedUp(std::max({triangle.a[i], triangle.b[i], triangle.c[i]}));
        }
        item.number = number;
        item.gain = gainOf(edge2);
        if (item.gain < infinity)
            m_tree.m_longestEdge = std::max(m_tree.m_longestEdge, std::sqrt(edge2));
        m_items.push_back(item);
    }

    void buildNode(const Task& task) {
        Box box;
        for (std::uint32_t i = task.begin; i < task.end; ++i)
            box.add(m_items[i]);
        Node& node = m_tree.m_nodes[task.node];
        node.low = box.low;
        node.high = box.high;
        node.gain = upperHalf(box.gain);
        const std::uint32_t count = task.end - task.begin;
        if (count <= trianglesPerLeaf) {
            node.first = task.begin;
            node.count = static_cast<std::uint16_t>(count);
            return;
        }
        const auto children = static_cast<std::uint32_t>(m_tree.m_nodes.size());
        node.first = children;
        node.count = 0;
        m_tree.m_nodes.resize(m_tree.m_nodes.size() + 2);
        const std::uint32_t middle = split(task, box);
        m_waiting.push_back({children + 1, middle, task.end, task.depth + 1});
        m_waiting.push_back({children, task.begin, middle, task.depth + 1});
    }

    /// Orders the items of a node so that those of its first child come first. @return where the
    /// second child's begin: neither is empty.
    std::uint32_t split(const Task& task, const Box& box) {
        if (task.depth < medianDepth)
            if (const std::optional<std::uint32_t> middle = splitByCost(task, box))
                return *middle;
        const std::uint32_t middle = task.begin + (task.end - task.begin) / 2;
        const std::size_t axis = box.longestAxis();
        std::nth_element(
            m_items.begin() + task.begin, m_items.begin() + middle, m_items.begin() + task.end,
            [axis](const Item& a, const Item& b) { return a.center(axis) < b.center(axis); });
        return middle;
    }

    /// Splits where the surface area heuristic sees the least cost; nothing where all items fall
    /// into one bin.
    std::optional<std::uint32_t> splitByCost(const Task& task, const Box& box) {
        const int count = task.end - task.begin < itemsForMostBins ? fewestBins : mostBins;
        const std::size_t axis = box.longestAxis();
        const float extent = 2 * (box.high[axis] - box.low[axis]);
        const Bins bins{axis, 2 * box.low[axis], static_cast<float>(count) / extent, count};
        if (!(bins.scale < infinity))
            return std::nullopt;
        std::array<Bin, mostBins> filled;
        for (std::uint32_t i = task.begin; i < task.end; ++i) {
            Bin& bin = filled[static_cast<std::size_t>(bins.of(m_items[i]))];
            bin.box.add(m_items[i]);
            ++bin.count;
        }
        const int last = cheapestBin(filled, count);
        if (last < 0)
            return std::nullopt;
        const auto middle =
            std::partition(m_items.begin() + task.begin, m_items.begin() + task.end,
                           [&bins, last](const Item& item) { return bins.of(item) <= last; });
        return static_cast<std::uint32_t>(middle - m_items.begin());
    }

    /// The last bin that goes into the first child; below 0 where there is only one that is filled.
    static int cheapestBin(const std::array<Bin, mostBins>& bins, int count) {
        std::array<float, mostBins> costAbove{};
        Bin above;
        for (int i = count - 1; i > 0; --i) {
            above.box.add(bins[static_cast<std::size_t>(i)].box);
            above.count += bins[static_cast<std::size_t>(i)].count;
            costAbove[static_cast<std::size_t>(i)] = costOf(above);
        }
        Bin below;
        int cheapest = -1;
        float lowestCost = infinity;
        for (int i = 0; i + 1 < count; ++i) {
            below.box.add(bins[static_cast<std::size_t>(i)].box);
            below.count += bins[static_cast<std::size_t>(i)].count;
            const float cost = costOf(below) + costAbove[static_cast<std::size_t>(i) + 1];
            if (cost < lowestCost) {
                lowestCost = cost;
                cheapest = i;
            }
        }
        return cheapest;
    }

    /// Infinite for an empty bin, which makes no child.
    static float costOf(const Bin& bin) {
        return bin.count == 0 ? infinity : bin.box.area() * static_cast<float>(bin.count);
    }

    TriangleTree& m_tree;
    const std::atomic<bool>& m_cancelled;
    std::vector<Item> m_items;
    std::vector<Task> m_waiting;
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
    return sizeof *this + m_nodes.capacity() * sizeof(Node) +
           (m_numbers.capacity() + m_always.capacity()) * sizeof(std::uint32_t);
}

TriangleTree::Line TriangleTree::makeLine(const PickRay& ray) const {
    const Node& root = m_nodes.front();
    Line line{};
    double farthest2 = 0.0;
    for (int i = 0; i < 3; ++i) {
        const auto axis = static_cast<std::size_t>(i);
        line.origin[axis] = ray.origin[i];
        line.inverse[axis] = 1.0 / ray.direction[i];
        const double farthest =
            std::max(std::abs(ray.origin[i] - static_cast<double>(root.low[axis])),
                     std::abs(static_cast<double>(root.high[axis]) - ray.origin[i]));
        farthest2 += farthest * farthest;
    }
    const double distance = std::sqrt(farthest2);
    line.padding = basePadding * distance;
    line.paddingPerGain = m_longestEdge + edgesPerDistance * distance;
    return line;
}

bool TriangleTree::meets(const Node& node, const Line& line) {
    const double padding =
        line.padding + static_cast<double>(fromUpperHalf(node.gain)) * line.paddingPerGain;
    double begin = -std::numeric_limits<double>::infinity();
    double end = std::numeric_limits<double>::infinity();
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double low = static_cast<double>(node.low[axis]) - line.origin[axis] - padding;
        const double high = static_cast<double>(node.high[axis]) - line.origin[axis] + padding;
        const double one = low * line.inverse[axis];
        const double other = high * line.inverse[axis];
        begin = std::max(begin, std::min(one, other));
        end = std::min(end, std::max(one, other));
    }
    return begin <= end;
}

} // namespace orbisk
