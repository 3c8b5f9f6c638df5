#include "readers/OldTextLook.h"

#include <cstddef>
#include <fstream>
#include <iterator>

namespace orbisk {

namespace {

constexpr std::size_t deepestBracket = 1200;
constexpr std::size_t longestNumber = 18; ///< digits that fit into 64 bits

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The word that ends before `end`, as a view on the text.
std::size_t wordBegin(const std::string& text, std::size_t end) {
    while (end > 0 && static_cast<unsigned char>(text[end - 1]) > ' ')
        --end;
    return end;
}

/// The number before the bracket at `bracket`, if there is one.
std::optional<unsigned long long> countBefore(const std::string& text, std::size_t bracket) {
    std::size_t end = bracket;
    while (end > 0 && static_cast<unsigned char>(text[end - 1]) <= ' ')
        --end;
    const std::size_t begin = wordBegin(text, end);
    if (begin == end || end - begin > longestNumber)
        return std::nullopt;
    unsigned long long count = 0;
    for (std::size_t i = begin; i < end; ++i) {
        if (!isDigit(text[i]))
            return std::nullopt;
        count = count * 10 + static_cast<unsigned long long>(text[i] - '0');
    }
    return count;
}

/// Whether the block at `bracket` holds the indices or lengths of a primitive set.
bool holdsPrimitives(const std::string& text, std::size_t bracket) {
    // The bracket stands behind the name or on the next line.
    const std::size_t last = text.find_last_not_of(" \t\r\n{", bracket);
    if (last == std::string::npos)
        return false;
    const std::size_t end = text.rfind('\n', last);
    const std::size_t name = text.find("Draw", end == std::string::npos ? 0 : end);
    return name != std::string::npos && name < last;
}

bool hasOnlyNumbers(const std::string& text, std::size_t bracket) {
    const std::size_t end = text.find_first_not_of("0123456789 \t\r\n", bracket + 1);
    return end != std::string::npos && text[end] == '}';
}

} // namespace

std::optional<std::string> oldTextRefusal(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    std::size_t depth = 0;
    for (std::size_t place = text.find_first_of("{}"); place != std::string::npos;
         place = text.find_first_of("{}", place + 1)) {
        if (text[place] == '}') {
            depth -= depth > 0 ? 1 : 0;
            continue;
        }
        if (++depth > deepestBracket)
            return "objects are nested too deeply";
        if (countBefore(text, place).value_or(0) > text.size() - place)
            return "more elements are announced than the file has bytes";
        if (holdsPrimitives(text, place) && !hasOnlyNumbers(text, place))
            return "a primitive set has something else than numbers";
    }
    return std::nullopt;
}

} // namespace orbisk
