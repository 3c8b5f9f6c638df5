#include "measure/NumberText.h"

#include <charconv>
#include <limits>

namespace orbisk {

namespace {

constexpr int decimals = 3;
/// Sign, the digits of the largest number before the dot, the dot and those behind it.
constexpr int longestDecimal = 1 + (std::numeric_limits<double>::max_exponent10 + 1) + 1 + decimals;
constexpr int longestOrdinal = std::numeric_limits<std::size_t>::digits10 + 1;

} // namespace

void appendDecimal(std::string& text, double value) {
    char characters[longestDecimal];
    const auto written = std::to_chars(characters, characters + longestDecimal, value,
                                       std::chars_format::fixed, decimals);
    text.append(characters, written.ptr);
}

void appendOrdinal(std::string& text, std::size_t index) {
    char characters[longestOrdinal];
    const auto written = std::to_chars(characters, characters + longestOrdinal, index + 1);
    text.append(characters, written.ptr);
}

} // namespace orbisk
