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

constexpr const char* areaName = "NumColumnsAndRows";
constexpr const char* heightsName = "Heights";

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

constexpr const char* blanks = " \t\r\n";
constexpr const char* wordEnds = " \t\r\n{}\"";

/// The words from `place` on, one after the other; a bracket and a quote are words of their own.
std::vector<std::string> wordsFrom(const std::string& text, std::size_t place, std::size_t count) {
    std::vector<std::string> words;
    while (words.size() < count) {
        const std::size_t begin = text.find_first_not_of(blanks, place);
        if (begin == std::string::npos)
            break;
        place = std::min(text.find_first_of(wordEnds, begin), text.size());
        place = std::max(place, begin + 1);
        words.push_back(text.substr(begin, place - begin));
    }
    return words;
}

/// The words before `end`, the last one first, as far as there is no bracket or quote among them.
std::vector<std::string> wordsBefore(const std::string& text, std::size_t end, std::size_t count) {
    std::vector<std::string> words;
    while (words.size() < count) {
        const std::size_t last =
            end == 0 ? std::string::npos : text.find_last_not_of(blanks, end - 1);
        if (last == std::string::npos || std::strchr("{}\"", text[last]))
            break;
        const std::size_t before = text.find_last_of(wordEnds, last);
        end = before == std::string::npos ? 0 : before + 1;
        words.push_back(text.substr(end, last + 1 - end));
    }
    return words;
}

std::string wordBefore(const std::string& text, std::size_t bracket) {
    const std::vector<std::string> words = wordsBefore(text, bracket, 1);
    return words.empty() ? "" : words.front();
}

/// Where the word `name` stands.
std::vector<std::size_t> placesOf(const std::string& name, const std::string& text) {
    std::vector<std::size_t> places;
    for (std::size_t place = text.find(name); place != std::string::npos;
         place = text.find(name, place + 1)) {
        const bool isBegin = place == 0 || std::strchr(wordEnds, text[place - 1]);
        const std::size_t end = place + name.size();
        if (isBegin && (end == text.size() || std::strchr(wordEnds, text[end])))
            places.push_back(place);
    }
    return places;
}

bool isNumber(const std::string& word) {
    const auto kind = osgDB::Field::calculateFieldType(word.c_str());
    return kind == osgDB::Field::INTEGER || kind == osgDB::Field::REAL;
}

bool isWholeNumber(const std::string& word) {
    return osgDB::Field::calculateFieldType(word.c_str()) == osgDB::Field::INTEGER;
}

bool isMark(const std::string& word) {
    return word == "{" || word == "}" || word == "\"";
}

/// Whether the block at `bracket` holds the indices or lengths of a primitive set.
bool holdsPrimitives(const std::string& text, std::size_t bracket) {
    // A name, a mode and up to three numbers stand before it.
    constexpr std::size_t most = 5;
    const std::vector<std::string> words = wordsBefore(text, bracket, most);
    return std::any_of(words.begin(), words.end(), [](const std::string& word) {
        return word == "DrawArrayLengths" || word == "DrawElementsUByte" ||
               word == "DrawElementsUShort" || word == "DrawElementsUInt";
    });
}

bool hasOnlyNumbers(const std::string& text, std::size_t bracket) {
    const std::size_t end = text.find_first_not_of("0123456789 \t\r\n", bracket + 1);
    return end != std::string::npos && text[end] == '}';
}

/// Whether the height field whose area stands at `place` is one: with room for heights, and, where
/// they follow, with as many as that.
bool isHeightField(const std::string& text, std::size_t place) {
    constexpr std::uint64_t fewest = 2;
    constexpr std::size_t head = 5; // the area, its sides, the name of the heights and a bracket
    std::vector<std::string> words = wordsFrom(text, place, head);
    words.resize(head);
    if (!isWholeNumber(words[1]) || !isWholeNumber(words[2]))
        return false;
    const std::uint64_t columns = std::strtoul(words[1].c_str(), nullptr, 0);
    const std::uint64_t rows = std::strtoul(words[2].c_str(), nullptr, 0);
    if (columns < fewest || rows < fewest || columns > text.size() || rows > text.size() ||
        columns * rows > text.size())
        return false;
    if (words[3] != heightsName)
        return true;
    const std::size_t whole = head + columns * rows + 1;
    words = wordsFrom(text, place, whole);
    return words.size() == whole && words[4] == "{" && words.back() == "}" &&
           std::none_of(words.begin() + head, words.end() - 1, isMark);
}

/// Whether heights follow on an area each, which makes room for them.
bool haveHeightsAreas(const std::string& text) {
    const std::vector<std::size_t> heights = placesOf(heightsName, text);
    return std::all_of(heights.begin(), heights.end(), [&](std::size_t place) {
        const std::vector<std::string> words = wordsBefore(text, place, 3);
        return words.size() == 3 && words.back() == areaName;
    });
}

/// Whether the block at `bracket`, in the one at `around` if any, is a matrix of more numbers than
/// its reader has room for.
bool isLargeMatrix(const std::string& text, std::size_t bracket, std::size_t around) {
    constexpr std::size_t most = 16;
    constexpr std::string_view names[] = {"Matrix",
                                          "PutMatrix",
                                          "ProjectionMatrix",
                                          "ViewMatrix",
                                          "projectorMatrix",
                                          "MatrixInSkeletonSpace",
                                          "InvBindMatrixInSkeletonSpace"};
    const std::string name = wordBefore(text, bracket);
    const bool isLocators = name == "Transform" && around != std::string::npos &&
                            wordBefore(text, around).find("Locator") != std::string::npos;
    if (!isLocators && std::find(std::begin(names), std::end(names), name) == std::end(names))
        return false;
    const std::vector<std::string> words = wordsFrom(text, bracket + 1, most + 1);
    // Behind a block within it the numbers would go on.
    const auto mark = std::find_if(words.begin(), words.end(), isMark);
    return mark == words.end() || *mark != "}";
}

/// Whether the block at `bracket` holds the times of a sequence with something among them that is
/// none, at which their reader stays for ever.
bool hasEndlessTimes(const std::string& text, std::size_t bracket) {
    if (wordBefore(text, bracket) != "frameTime")
        return false;
    for (std::size_t place = bracket + 1;;) {
        const std::vector<std::string> word = wordsFrom(text, place, 1);
        if (word.empty() || word[0] == "}")
            return false;
        if (!isNumber(word[0]))
            return true;
        place = text.find(word[0], place) + word[0].size();
    }
}

/// Whether the word behind each word `name` is as it should be; an empty one where there is none.
template <typename Fine>
bool allBehind(const std::string& text, const std::string& name, const Fine& isFine) {
    const std::vector<std::size_t> places = placesOf(name, text);
    return std::all_of(places.begin(), places.end(), [&](std::size_t place) {
        std::vector<std::string> words = wordsFrom(text, place, 2);
        words.resize(2);
        return isFine(words[1]);
    });
}

/// Whether what is put to a numbered place of a list is put where there may be one: the lists are
/// made as long as that, from the first place on.
bool arePlacesInListsFine(const std::string& text) {
    constexpr long long highest = 255;
    constexpr const char* names[] = {
        "textureUnit",       "TextureUnit",         "TexCoordArray",       "TexCoordIndices",
        "VertexAttribArray", "VertexAttribBinding", "VertexAttribIndices", "VertexAttribNormalize",
        "ColorLayer",        "ActiveSwitchSet",     "ValueList",
    };
    return std::all_of(std::begin(names), std::end(names), [&](const char* name) {
        // A bracket may stand there instead of a number, which is then taken for 0.
        return allBehind(text, name, [](const std::string& place) {
            const long long number = std::strtoll(place.c_str(), nullptr, 0);
            return number >= 0 && number <= highest;
        });
    });
}

std::optional<std::string> numberRefusal(const std::string& text) {
    constexpr double highestDetail = 16.0;
    if (!haveHeightsAreas(text))
        return "a height field has heights without an area";
    const std::vector<std::size_t> areas = placesOf(areaName, text);
    if (!std::all_of(areas.begin(), areas.end(),
                     [&](std::size_t place) { return isHeightField(text, place); }))
        return "a height field has another number of heights than it says";
    if (!allBehind(text, "detailRatio", [](const std::string& ratio) {
            const double number = std::strtod(ratio.c_str(), nullptr);
            return number >= 0.0 && number <= highestDetail;
        }))
        return "a shape of absurd detail";
    if (!arePlacesInListsFine(text))
        return "a place in a list is far beyond what there can be";
    return std::nullopt;
}

} // namespace

std::optional<std::string> oldTextRefusal(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    blankQuoted(text);
    if (!hasPlainLetters(text))
        return "a letter that belongs into quotes stands outside";
    std::vector<std::size_t> blocks;
    for (std::size_t place = text.find_first_of("{}"); place != std::string::npos;
         place = text.find_first_of("{}", place + 1)) {
        if (text[place] == '}') {
            if (blocks.empty())
                return "an end belongs to no block";
            blocks.pop_back();
            continue;
        }
        const auto around = blocks.empty() ? std::string::npos : blocks.back();
        blocks.push_back(place);
        if (blocks.size() > deepestBracket)
            return "objects are nested too deeply";
        if (countBefore(text, place).value_or(0) > text.size() - place)
            return "more elements are announced than the file has bytes";
        if (holdsPrimitives(text, place) && !hasOnlyNumbers(text, place))
            return "a primitive set has something else than numbers";
        if (isLargeMatrix(text, place, around))
            return "a matrix has too many numbers";
        if (hasEndlessTimes(text, place))
            return "a sequence has something else than times";
    }
    // Some readers take a word where the file ends that there is not.
    if (!blocks.empty())
        return "a block has no end";
    return numberRefusal(text);
}

} // namespace orbisk
