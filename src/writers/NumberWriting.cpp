#include "writers/NumberWriting.h"

#include <array>
#include <charconv>

namespace orbisk {

namespace {

constexpr std::size_t longestText = 32; ///< of the shortest text of a number

template <typename Number>
void append(std::string& out, Number number) {
    std::array<char, longestText> text;
    out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

} // namespace

void appendNumber(std::string& out, float number) {
    append(out, number);
}

void appendNumber(std::string& out, double number) {
    append(out, number);
}

void appendNumber(std::string& out, std::size_t number) {
    append(out, number);
}

} // namespace orbisk
