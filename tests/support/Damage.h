#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

namespace orbisk::test {

/// Damages a file as disks, transfers and editors do: bits flip, stretches are lost, doubled or
/// replaced by numbers that are out of all proportion, the end is missing.
inline std::string damaged(std::string bytes, std::mt19937& random) {
    constexpr int mostDamages = 6;
    constexpr std::size_t mostStretch = 40;
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (std::size_t i = 1 + below(mostDamages); i > 0 && !bytes.empty(); --i) {
        const std::size_t at = below(bytes.size());
        const std::size_t length = 1 + below(mostStretch);
        switch (below(6)) {
        case 0:
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
            break;
        case 1:
            bytes[at] = static_cast<char>(below(256));
            break;
        case 2:
            bytes.erase(at, length);
            break;
        case 3:
            bytes.insert(at, bytes.substr(below(bytes.size()), length));
            break;
        case 4: {
            constexpr std::uint32_t extremes[] = {0,          1,          0x7FFFFFFF, 0x80000000,
                                                  0xFFFFFFFF, 0x0000FFFF, 0x7F800000, 0x7FC00000};
            const std::uint32_t extreme = extremes[below(8)];
            std::memcpy(&bytes[at], &extreme, std::min(sizeof extreme, bytes.size() - at));
            break;
        }
        default:
            if (below(4) == 0)
                bytes.resize(at);
            break;
        }
    }
    return bytes;
}

} // namespace orbisk::test
