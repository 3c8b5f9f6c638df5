#include "readers/TextWords.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

namespace orbisk {

namespace {

/// Where `from_chars` has to begin: it knows no plus sign.
const char* afterPlus(const char* begin, const char* end) {
    const bool isPlus = end - begin > 1 && *begin == '+' && begin[1] != '-' && begin[1] != '+';
    return isPlus ? begin + 1 : begin;
}

/// What a number beyond the range of doubles becomes: `text` is all of its characters.
double beyondRange(std::string_view text) {
    const std::size_t exponent = text.find_first_of("eE");
    const std::string_view digits = text.substr(0, exponent);
    const bool hasWhole =
        digits.substr(0, digits.find('.')).find_first_of("123456789") != std::string_view::npos;
    const bool isSmall = exponent != std::string_view::npos
                             ? text.substr(exponent).find('-') != std::string_view::npos
                             : !hasWhole;
    const double value = isSmall ? 0.0 : std::numeric_limits<double>::infinity();
    return text.front() == '-' ? -value : value;
}

/// Whether a double lies halfway between two floats, so that it does not tell which of the two is
/// nearer to the text it was rounded from.
bool isHalfwayBetweenFloats(double value) {
    constexpr int surplusBits =
        std::numeric_limits<double>::digits - std::numeric_limits<float>::digits;
    constexpr std::uint64_t surplus = (std::uint64_t{1} << surplusBits) - 1;
    constexpr std::uint64_t half = std::uint64_t{1} << (surplusBits - 1);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return (bits & surplus) == half;
}

double nudgedToNearestFloat(double value, const char* begin, const char* end) {
    float nearest = 0.0f;
    if (std::from_chars(begin, end, nearest).ec != std::errc() ||
        static_cast<float>(value) == nearest)
        return value;
    return std::nextafter(value, static_cast<double>(nearest));
}

} // namespace

std::string_view withoutLeadingBlanks(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size() && isBlank(text[begin]))
        ++begin;
    return text.substr(begin);
}

std::string_view trimmed(std::string_view text) {
    text = withoutLeadingBlanks(text);
    std::size_t end = text.size();
    while (end > 0 && isBlank(text[end - 1]))
        --end;
    return text.substr(0, end);
}

std::string_view takeWord(std::string_view& text) {
    text = withoutLeadingBlanks(text);
    std::size_t end = 0;
    while (end < text.size() && !isBlank(text[end]))
        ++end;
    const std::string_view word = text.substr(0, end);
    text.remove_prefix(end);
    return word;
}

bool takeNumber(std::string_view& text, double& value) {
    const std::string_view field = withoutLeadingBlanks(text);
    const char* const end = field.data() + field.size();
    const char* const begin = afterPlus(field.data(), end);
    double number = 0.0;
    const auto [after, error] = std::from_chars(begin, end, number);
    if (error == std::errc::invalid_argument)
        return false;
    if (error == std::errc::result_out_of_range)
        number = beyondRange({begin, static_cast<std::size_t>(after - begin)});
    else if (isHalfwayBetweenFloats(number))
        number = nudgedToNearestFloat(number, begin, end);
    value = number;
    text = {after, static_cast<std::size_t>(end - after)};
    return true;
}

bool takeInteger(std::string_view& text, int& value) {
    const std::string_view field = withoutLeadingBlanks(text);
    const char* const end = field.data() + field.size();
    int number = 0;
    const auto [after, error] = std::from_chars(afterPlus(field.data(), end), end, number);
    if (error == std::errc::invalid_argument)
        return false;
    value = error == std::errc() ? number : 0;
    text = {after, static_cast<std::size_t>(end - after)};
    return true;
}

double numberOf(std::string_view word) {
    double number = std::numeric_limits<double>::quiet_NaN();
    takeNumber(word, number);
    return number;
}

bool beginsWithWord(std::string_view text, std::string_view word) {
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return text.size() >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin(),
                      [&](char wanted, char found) { return wanted == lower(found); });
}

} // namespace orbisk
