#include "writers/ExactNumbers.h"

#include <osg/Math>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace orbisk {

namespace {

/// Digits before the point of the mantissas that are tried.
constexpr int leastMantissaDigits = 1;
constexpr int mostMantissaDigits = 22;
constexpr int neighbours = 3;
constexpr std::size_t longestText = 48; ///< of the shortest text, and of a whole mantissa

using Text = std::array<char, longestText>;

bool readsAs(const Text& text, double number) {
    return osg::asciiToDouble(text.data()) == number;
}

void writeShortest(double number, Text& text) {
    *std::to_chars(text.data(), text.data() + text.size() - 1, number).ptr = '\0';
}

/// Tries the numbers about `number` times a power of ten, to be multiplied by its inverse
/// ("49399.487e1"). Every power makes the reader's errors fall differently, and where the product's
/// mantissa is the greater one the products lie denser than the doubles do: with a score of powers
/// one of them is the wanted number.
bool findScaled(double number, int mantissaDigits, Text& text) {
    const int exponent =
        static_cast<int>(std::floor(std::log10(std::fabs(number)))) + 1 - mantissaDigits;
    double mantissa = number / std::pow(10.0, exponent);
    for (int i = 0; i < neighbours; ++i)
        mantissa = std::nextafter(mantissa, -std::numeric_limits<double>::infinity());
    for (int i = -neighbours; i <= neighbours; ++i) {
        char* end = std::to_chars(text.data(), text.data() + text.size(), mantissa,
                                  std::chars_format::fixed)
                        .ptr;
        *end++ = 'e';
        *std::to_chars(end, text.data() + text.size() - 1, exponent).ptr = '\0';
        if (readsAs(text, number))
            return true;
        mantissa = std::nextafter(mantissa, std::numeric_limits<double>::infinity());
    }
    return false;
}

/// Whether the powers of ten that scale the number are finite and not 0.
bool canBeScaled(double number) {
    constexpr double least = 1e-280;
    return std::fabs(number) > least;
}

/// The reader takes words for 0, but computes with powers that are too large for it.
const char* notFinite(double number) {
    if (std::isnan(number))
        return "0e999";
    return number > 0.0 ? "1e999" : "-1e999";
}

} // namespace

std::string exactText(double number) {
    if (!std::isfinite(number))
        return notFinite(number);
    Text text;
    writeShortest(number, text);
    if (!canBeScaled(number) || readsAs(text, number))
        return text.data();
    for (int digits = leastMantissaDigits; digits <= mostMantissaDigits; ++digits)
        if (findScaled(number, digits, text))
            return text.data();
    writeShortest(number, text);
    return text.data();
}

ExactNumbers::iter_type ExactNumbers::do_put(iter_type out, std::ios_base&, char_type,
                                             double number) const {
    const std::string text = exactText(number);
    return std::copy(text.begin(), text.end(), out);
}

} // namespace orbisk
