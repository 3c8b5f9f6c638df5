#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orbisk {

/// Numbers distinct values from 0 in the order in which they come. Which values are the same, and
/// where one is looked for, `Traits` says: `static bool same(const Value&, const Value&)` and
/// `static std::uint64_t hash(const Value&)`, equal for the same values and well mixed.
template <class Value, class Traits>
class DistinctValues {
public:
    DistinctValues() : m_slots(smallest, none) {}

    /// The number of `value`, a new one where the same has not come yet. At most 2^32 - 2 values.
    std::uint32_t numberOf(const Value& value) {
        std::size_t slot = slotOf(value);
        while (m_slots[slot] != none) {
            if (Traits::same(m_values[m_slots[slot]], value))
                return m_slots[slot];
            slot = (slot + 1) & (m_slots.size() - 1);
        }
        const auto number = static_cast<std::uint32_t>(m_values.size());
        m_slots[slot] = number;
        m_values.push_back(value);
        if (isFull(m_values.size()))
            grow();
        return number;
    }

    /// Makes room for so many values, so that they need not be moved when they come.
    void reserve(std::size_t count) {
        m_values.reserve(count);
        while (isFull(count))
            grow();
    }

    const std::vector<Value>& values() const { return m_values; }

private:
    struct Share {
        std::size_t numerator;
        std::size_t denominator;
    };

    static constexpr std::uint32_t none = ~std::uint32_t{0};
    static constexpr std::size_t smallest = 16; ///< a power of two, as every size is
    static constexpr Share fullest{5, 8};

    std::size_t slotOf(const Value& value) const {
        return static_cast<std::size_t>(Traits::hash(value)) & (m_slots.size() - 1);
    }

    bool isFull(std::size_t count) const {
        return count * fullest.denominator > m_slots.size() * fullest.numerator;
    }

    void grow() {
        m_slots.assign(m_slots.size() * 2, none);
        for (std::uint32_t number = 0; number < m_values.size(); ++number) {
            std::size_t slot = slotOf(m_values[number]);
            while (m_slots[slot] != none)
                slot = (slot + 1) & (m_slots.size() - 1);
            m_slots[slot] = number;
        }
    }

    std::vector<Value> m_values;
    std::vector<std::uint32_t> m_slots;
};

/// Mixes the bits of `next` into a hash.
inline std::uint64_t mixedHash(std::uint64_t hash, std::uint64_t next) {
    // The odd constant is 2^64 divided by the golden ratio.
    constexpr std::uint64_t multiplier = 0x9e3779b97f4a7c15u;
    constexpr int halfOfBits = 32;
    const std::uint64_t product = (hash ^ next) * multiplier;
    return product ^ (product >> halfOfBits);
}

} // namespace orbisk
