#include "measure/CellOrder.h"

#include <utility>

namespace orbisk {

namespace {

constexpr unsigned int cellBits = 32;
constexpr unsigned int bitsOfByte = 8;
constexpr std::size_t valuesOfByte = 1u << bitsOfByte;

constexpr unsigned int digitBits = 11;
constexpr std::size_t digitValues = 1u << digitBits;
/// Fewer are sorted faster by comparing.
constexpr std::size_t fewKeys = 2048;

float middle2(const TriangleRun& run, std::size_t axis) {
    return run.low[axis] + run.high[axis];
}

/// Numbers the cells. Their bits are shared out between the axes by the sides' lengths.
class CellNumbers {
public:
    explicit CellNumbers(const std::vector<TriangleRun>& runs) {
        std::array<double, 3> side{};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const auto [least, most] = std::minmax_element(
                runs.begin(), runs.end(), [axis](const TriangleRun& a, const TriangleRun& b) {
                    return middle2(a, axis) < middle2(b, axis);
                });
            m_axes[axis].start = static_cast<double>(middle2(*least, axis));
            side[axis] = static_cast<double>(middle2(*most, axis)) - m_axes[axis].start;
        }
        shareBits(side);
    }

    std::uint32_t of(const TriangleRun& run) const {
        std::uint32_t cell = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const Axis& along = m_axes[axis];
            const double part =
                (static_cast<double>(middle2(run, axis)) - along.start) * along.scale;
            auto step = static_cast<std::uint32_t>(std::min(part, along.last));
            for (std::size_t byte = 0; byte < along.bytes; ++byte, step >>= bitsOfByte)
                cell |= along.spread[byte][step % valuesOfByte];
        }
        return cell;
    }

private:
    /// How a place on an axis becomes bits of a cell's number.
    struct Axis {
        double start = 0.0;
        double scale = 0.0;
        double last = 0.0;
        std::size_t bytes = 0;
        /// By each byte of the step along the axis: its bits where they belong.
        std::array<std::array<std::uint32_t, valuesOfByte>, sizeof(std::uint32_t)> spread;
    };

    void shareBits(std::array<double, 3> side) {
        std::array<std::vector<unsigned int>, 3> places; ///< of each axis's bits, highest first
        const std::array<double, 3> whole = side;
        for (unsigned int bit = cellBits; bit-- > 0;) {
            const auto longest =
                static_cast<std::size_t>(std::max_element(side.begin(), side.end()) - side.begin());
            places[longest].push_back(bit);
            side[longest] /= 2;
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            Axis& along = m_axes[axis];
            const double steps = whole[axis] / side[axis];
            along.scale = whole[axis] > 0 ? steps / whole[axis] : 0;
            along.last = whole[axis] > 0 ? steps - 1 : 0;
            std::reverse(places[axis].begin(), places[axis].end());
            makeSpread(along, places[axis]);
        }
    }

    static void makeSpread(Axis& along, const std::vector<unsigned int>& places) {
        along.bytes = (places.size() + bitsOfByte - 1) / bitsOfByte;
        for (std::size_t byte = 0; byte < along.bytes; ++byte)
            for (std::size_t value = 0; value < valuesOfByte; ++value) {
                std::uint32_t bits = 0;
                for (std::size_t bit = 0; bit < bitsOfByte; ++bit) {
                    const std::size_t place = byte * bitsOfByte + bit;
                    if ((value >> bit) % 2 == 1 && place < places.size())
                        bits |= 1u << places[place];
                }
                along.spread[byte][value] = bits;
            }
    }

    std::array<Axis, 3> m_axes;
};

/// Sorts by the upper halves, digit by digit from the lowest.
void sortByCell(std::vector<std::uint64_t>& keys, const std::atomic<bool>& cancelled) {
    if (keys.size() < fewKeys) {
        std::sort(keys.begin(), keys.end());
        return;
    }
    std::vector<std::uint64_t> sorted(keys.size());
    for (unsigned int shift = cellBits; shift < 2 * cellBits && !cancelled; shift += digitBits) {
        const auto digit = [shift](std::uint64_t key) {
            return static_cast<std::size_t>(key >> shift) % digitValues;
        };
        std::array<std::size_t, digitValues> next{};
        for (const std::uint64_t key : keys)
            ++next[digit(key)];
        std::size_t sum = 0;
        for (std::size_t& place : next)
            sum += std::exchange(place, sum);
        for (const std::uint64_t key : keys)
            sorted[next[digit(key)]++] = key;
        keys.swap(sorted);
    }
}

} // namespace

CellOrder CellOrder::of(const std::vector<TriangleRun>& runs, const std::atomic<bool>& cancelled) {
    CellOrder order;
    const CellNumbers cells(runs);
    order.m_keys.reserve(runs.size());
    for (std::size_t i = 0; i < runs.size(); ++i)
        order.m_keys.push_back(static_cast<std::uint64_t>(cells.of(runs[i])) << cellBits | i);
    sortByCell(order.m_keys, cancelled);
    return order;
}

std::uint32_t CellOrder::middleOf(std::uint32_t begin, std::uint32_t end) const {
    const std::uint64_t different = (m_keys[begin] ^ m_keys[end - 1]) >> cellBits;
    if (different == 0)
        return begin + (end - begin) / 2;
    unsigned int bit = cellBits;
    while (different >> (bit + 1 - cellBits) != 0)
        ++bit;
    const auto first = m_keys.begin();
    const auto middle = std::partition_point(
        first + begin, first + end, [bit](std::uint64_t key) { return (key >> bit) % 2 == 0; });
    return static_cast<std::uint32_t>(middle - first);
}

} // namespace orbisk
