#include "readers/OldTextLook.h"

#include <osgDB/Input>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <vector>

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

/// Behind the text that begins with the quote at `place`; the end where it has none.
std::size_t afterQuoted(const std::string& text, std::size_t place) {
    const char ends[] = {text[place], '\\', '\0'};
    place = text.find_first_of(ends, place + 1);
    while (place != std::string::npos && text[place] == '\\')
        place = text.find_first_of(ends, place + 2);
    return place == std::string::npos ? text.size() : place + 1;
}

/// Puts quotes in place of what is quoted, which means nothing to the readers of numbers.
void blankQuoted(std::string& text) {
    for (std::size_t place = text.find_first_of("\"'"); place < text.size();
         place = text.find_first_of("\"'", place)) {
        const std::size_t end = afterQuoted(text, place);
        std::fill(text.begin() + static_cast<std::ptrdiff_t>(place),
                  text.begin() + static_cast<std::ptrdiff_t>(end), '"');
        place = end;
    }
}

/// Whether the readers see the words that stand there: they end a word at a zero and, in some
/// systems, the whole file at an end mark, and take other letters than those of ASCII for anything.
bool hasPlainLetters(const std::string& text) {
    constexpr unsigned char endMark = 0x1a;
    constexpr unsigned char firstForeign = 0x80;
    return std::none_of(text.begin(), text.end(), [](unsigned char c) {
        return c == 0 || c == endMark || c >= firstForeign;
    });
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

constexpr const char* blanks = " \t\r\n";

/// The words from `place` on, one after the other; a bracket is a word of its own.
std::vector<std::string> wordsFrom(const std::string& text, std::size_t place, std::size_t count) {
    std::vector<std::string> words;
    while (words.size() < count) {
        const std::size_t begin = text.find_first_not_of(blanks, place);
        if (begin == std::string::npos)
            break;
        place = std::min(text.find_first_of(" \t\r\n{}", begin), text.size());
        place = std::max(place, begin + 1);
        words.push_back(text.substr(begin, place - begin));
    }
    return words;
}

/// Whether the heights of the field whose area stands at `place` are as many as that, in brackets.
bool hasItsHeights(const std::string& text, std::size_t place) {
    constexpr std::uint64_t fewest = 2;
    const std::vector<std::string> sides = wordsFrom(text, place, 2);
    if (sides.size() < 2)
        return false;
    const std::uint64_t columns = std::strtoul(sides[0].c_str(), nullptr, 0);
    const std::uint64_t rows = std::strtoul(sides[1].c_str(), nullptr, 0);
    if (columns < fewest || rows < fewest || columns > text.size() || rows > text.size() ||
        columns * rows > text.size())
        return false;
    const std::size_t heights = text.find("Heights", place);
    if (heights == std::string::npos)
        return true;
    const std::vector<std::string> words = wordsFrom(text, heights, columns * rows + 3);
    return words.size() == columns * rows + 3 && words[1] == "{" &&
           std::find(words.begin(), words.end(), "}") == words.end() - 1;
}

/// Whether heights stand behind an area each, which makes room for them.
bool haveHeightsAreas(const std::string& text, const std::string& area) {
    const std::string heights = "Heights";
    std::size_t former = 0;
    for (std::size_t place = text.find(heights); place != std::string::npos;
         place = text.find(heights, former)) {
        const std::size_t room = text.find(area, former);
        if (room > place)
            return false;
        former = place + heights.size();
    }
    return true;
}

/// Whether the block at `bracket` is a matrix of more numbers than its reader has room for.
bool isLargeMatrix(const std::string& text, std::size_t bracket) {
    constexpr std::size_t most = 16;
    constexpr std::string_view ending = "atrix";
    const std::size_t last = text.find_last_not_of(" \t\r\n{", bracket);
    if (last == std::string::npos || last + 1 < ending.size() ||
        text.compare(last + 1 - ending.size(), ending.size(), ending) != 0)
        return false;
    const std::vector<std::string> words = wordsFrom(text, bracket + 1, most + 1);
    return std::find(words.begin(), words.end(), "}") == words.end();
}

/// Whether the block at `bracket` holds the times of a sequence with something among them that is
/// none, at which their reader stays for ever.
bool hasEndlessTimes(const std::string& text, std::size_t bracket) {
    constexpr std::string_view name = "frameTime";
    const std::size_t last = text.find_last_not_of(" \t\r\n{", bracket);
    if (last == std::string::npos || last + 1 < name.size() ||
        text.compare(last + 1 - name.size(), name.size(), name) != 0)
        return false;
    for (std::size_t place = bracket + 1;;) {
        const std::vector<std::string> word = wordsFrom(text, place, 1);
        if (word.empty() || word[0] == "}")
            return word.empty();
        const auto kind = osgDB::Field::calculateFieldType(word[0].c_str());
        if (kind != osgDB::Field::INTEGER && kind != osgDB::Field::REAL)
            return true;
        place = text.find(word[0], place) + word[0].size();
    }
}

/// Whether the word behind each word `name` is as it should be; an empty one where there is none.
template <typename Fine>
bool allBehind(const std::string& text, const std::string& name, const Fine& isFine) {
    for (std::size_t place = text.find(name); place != std::string::npos;
         place = text.find(name, place + 1)) {
        const bool isBegin = place == 0 || std::strchr(" \t\r\n{}\"", text[place - 1]);
        std::vector<std::string> words = wordsFrom(text, place, 2);
        words.resize(2);
        if (isBegin && words[0] == name && !isFine(words[1]))
            return false;
    }
    return true;
}

std::optional<std::string> numberRefusal(const std::string& text) {
    constexpr double highestDetail = 16.0;
    constexpr long long highestTextureUnit = 255;
    const std::string area = "NumColumnsAndRows";
    if (!haveHeightsAreas(text, area))
        return "a height field has heights without an area";
    for (std::size_t place = text.find(area); place != std::string::npos;
         place = text.find(area, place + 1))
        if (!hasItsHeights(text, place + area.size()))
            return "a height field has another number of heights than it says";
    if (!allBehind(text, "detailRatio", [](const std::string& ratio) {
            const double number = std::strtod(ratio.c_str(), nullptr);
            return number >= 0.0 && number <= highestDetail;
        }))
        return "a shape of absurd detail";
    // There is room for the units up to it, each of them.
    if (!allBehind(text, "textureUnit", [](const std::string& unit) {
            const long long number = std::strtoll(unit.c_str(), nullptr, 0);
            return number >= 0 && number <= highestTextureUnit;
        }))
        return "a picture is on a unit that there is not";
    return std::nullopt;
}

} // namespace

std::optional<std::string> oldTextRefusal(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    blankQuoted(text);
    if (!hasPlainLetters(text))
        return "a letter that belongs into quotes stands outside";
    std::size_t depth = 0;
    for (std::size_t place = text.find_first_of("{}"); place != std::string::npos;
         place = text.find_first_of("{}", place + 1)) {
        if (text[place] == '}') {
            if (depth == 0)
                return "an end belongs to no block";
            --depth;
            continue;
        }
        if (++depth > deepestBracket)
            return "objects are nested too deeply";
        if (countBefore(text, place).value_or(0) > text.size() - place)
            return "more elements are announced than the file has bytes";
        if (holdsPrimitives(text, place) && !hasOnlyNumbers(text, place))
            return "a primitive set has something else than numbers";
        if (isLargeMatrix(text, place))
            return "a matrix has too many numbers";
        if (hasEndlessTimes(text, place))
            return "a sequence has something else than times";
    }
    // Some readers take a word where the file ends that there is not.
    if (depth > 0)
        return "a block has no end";
    return numberRefusal(text);
}

} // namespace orbisk
