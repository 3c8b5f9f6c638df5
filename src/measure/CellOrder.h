#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace orbisk {

/// An axis-aligned box that also keeps the longest of the edges in it.
struct Box {
    std::array<float, 3> low{largest, largest, largest};
    std::array<float, 3> high{-largest, -largest, -largest};
    float edge2 = 0.0f; ///< its square

    template <typename Other>
    void add(const Other& other) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low[axis], other.low[axis]);
            high[axis] = std::max(high[axis], other.high[axis]);
        }
        edge2 = std::max(edge2, other.edge2);
    }

private:
    static constexpr float largest = std::numeric_limits<float>::infinity();
};

/// The box of triangles with consecutive numbers.
struct TriangleRun {
    std::array<float, 3> low;
    std::array<float, 3> high;
    float edge2;
    std::uint32_t first;
    std::uint32_t count;
};

/// Boxes of runs in the order of the cells their middles lie in. A cell is halved across its longer
/// side, again and again; each half comes with all that is in it before the other.
class CellOrder {
public:
    CellOrder() = default;

    /// Orders the runs, whose boxes must be finite. Where it is cancelled they are in any order.
    static CellOrder of(const std::vector<TriangleRun>& runs, const std::atomic<bool>& cancelled);

    /// Which run stands at this place.
    std::uint32_t at(std::uint32_t place) const {
        return static_cast<std::uint32_t>(m_keys[place]);
    }

    /// Where the smallest cell that holds the places from `begin` to before `end`, two at least, is
    /// halved; halfway where all are in the same smallest cell. Neither half is empty.
    std::uint32_t middleOf(std::uint32_t begin, std::uint32_t end) const;

private:
    /// The cell in the upper half, the run in the lower.
    std::vector<std::uint64_t> m_keys;
};

} // namespace orbisk
