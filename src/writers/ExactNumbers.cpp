#include "writers/ExactNumbers.h"

#include <osg/Math>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace orbisk {

namespace {

constexpr int significantDigits = std::numeric_limits<double>::max_digits10;
constexpr int mostNeighbours = 8;
constexpr std::size_t longestText = 48; ///< of what is written in scientific notation

using Text = std::array<char, longestText>;

bool readsAs(const Text& text, double number) {
    return osg::asciiToDouble(text.data()) == number;
}

void writeShortest(double number, Text& text) {
    *std::to_chars(text.data(), text.data() + text.size() - 1, number).ptr = '\0';
}

void writeAllDigits(double number, std::chars_format format, Text& text) {
    const auto end = std::to_chars(text.data(), text.data() + text.size() - 1, number, format,
                                   significantDigits);
    *(end.ec == std::errc() ? end.ptr : text.data()) = '\0';
}

/// The digits without a point, the exponent according: "12345e-3".
void writeWholeMantissa(double number, Text& text) {
    Text scientific;
    char* end = std::to_chars(scientific.data(), scientific.data() + scientific.size() - 1, number,
                              std::chars_format::scientific)
                    .ptr;
    const char* mark = std::find(scientific.data(), end, 'e');
    const char* point = std::find(static_cast<const char*>(scientific.data()), mark, '.');
    char* out = std::copy(static_cast<const char*>(scientific.data()), point, text.data());
    int exponent = 0;
    const char* digits = mark + (mark[1] == '+' ? 2 : 1);
    std::from_chars(digits, end, exponent);
    if (point != mark) {
        out = std::copy(point + 1, mark, out);
        exponent -= static_cast<int>(mark - point) - 1;
    }
    *out++ = 'e';
    *std::to_chars(out, text.data() + text.size() - 1, exponent).ptr = '\0';
}

/// Looks for a text near `number` that is read as `wanted`.
bool findText(double number, double wanted, Text& text) {
    writeShortest(number, text);
    if (readsAs(text, wanted))
        return true;
    writeWholeMantissa(number, text);
    if (readsAs(text, wanted))
        return true;
    for (const auto format : {std::chars_format::general, std::chars_format::scientific}) {
        writeAllDigits(number, format, text);
        if (readsAs(text, wanted))
            return true;
    }
    return false;
}

} // namespace

std::string exactText(double number) {
    Text text;
    if (std::isfinite(number)) {
        double above = number;
        double below = number;
        for (int i = 0; i <= mostNeighbours; ++i) {
            if (findText(above, number, text) || (i > 0 && findText(below, number, text)))
                return text.data();
            above = std::nextafter(above, std::numeric_limits<double>::infinity());
            below = std::nextafter(below, -std::numeric_limits<double>::infinity());
        }
    }
    writeShortest(number, text);
    return text.data();
}

ExactNumbers::iter_type ExactNumbers::do_put(iter_type out, std::ios_base&, char_type,
                                             double number) const {
    const std::string text = exactText(number);
    return std::copy(text.begin(), text.end(), out);
}

} // namespace orbisk
