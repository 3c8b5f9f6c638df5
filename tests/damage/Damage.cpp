#include "damage/Damage.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace orbisk::test {

namespace {

/// Random numbers that are the same with every standard library (the "splitmix64" generator of
/// Steele, Lea and Flood).
class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {
        m_state += 0x9e3779b97f4a7c15u;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
        return z ^ (z >> 31);
    }

    /// One of 0 to `count` - 1; `count` is not 0.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }

private:
    std::uint64_t m_state;
};

/// How much one damage does at most.
struct Extent {
    std::size_t changes; ///< of single bytes or bits
    std::size_t run;     ///< bytes that are emptied, repeated or left out
};

constexpr Extent large{20, 400};
constexpr Extent small{3, 40};
constexpr std::size_t mostDamages = 6;
constexpr std::size_t mostMeanings = 4;

/// The first kind of damage cuts a file off, after which little of it may be left.
constexpr std::size_t kinds = 8;
constexpr std::size_t filesForOneCut = 6;
constexpr const char* absurdTexts[] = {"-1",   "0",           "4294967295", "2147483647",  "65536",
                                       "1e39", "-2000000000", "nan",        "99999999999", ""};
constexpr std::uint32_t absurdNumbers[] = {0xffffffffu, 0x7fffffffu, 0x80000000u, 0x0000ffffu,
                                           0x00ffffffu, 0u,          0x7fc00000u, 0x10000000u};

struct Run {
    std::size_t begin;
    std::size_t size;
};

Run chooseRun(const std::string& bytes, std::size_t longest, Dice& dice) {
    const std::size_t begin = dice.below(bytes.size());
    return {begin, std::min(bytes.size() - begin, 1 + dice.below(longest))};
}

void changeBytes(std::string& bytes, std::size_t most, Dice& dice) {
    const std::size_t count = 1 + dice.below(most);
    for (std::size_t i = 0; i < count; ++i)
        bytes[dice.below(bytes.size())] = static_cast<char>(dice.below(256));
}

void changeBits(std::string& bytes, std::size_t most, Dice& dice) {
    const std::size_t count = 1 + dice.below(most);
    for (std::size_t i = 0; i < count; ++i) {
        char& byte = bytes[dice.below(bytes.size())];
        byte = static_cast<char>(byte ^ (1 << dice.below(8)));
    }
}

void makeNumberAbsurd(std::string& bytes, Dice& dice) {
    const std::uint32_t number = absurdNumbers[dice.below(std::size(absurdNumbers))];
    if (bytes.size() < sizeof number)
        return;
    const std::size_t place = dice.below(bytes.size() - sizeof number + 1);
    std::memcpy(bytes.data() + place, &number, sizeof number);
}

void makeWordAbsurd(std::string& bytes, Dice& dice) {
    const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
    const std::size_t start = dice.below(bytes.size());
    const auto first =
        std::find_if(bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end(), isDigit);
    const auto last = std::find_if_not(first, bytes.end(), isDigit);
    bytes.replace(first, last, absurdTexts[dice.below(std::size(absurdTexts))]);
}

Run wordAt(const std::string& bytes, std::size_t place) {
    const auto isPart = [](unsigned char c) { return c > ' ' && c != ',' && c != ';'; };
    const auto at = [&](std::size_t i) { return bytes.begin() + static_cast<std::ptrdiff_t>(i); };
    const auto begin = std::find_if(at(place), bytes.end(), isPart);
    const auto end = std::find_if_not(begin, bytes.end(), isPart);
    return {static_cast<std::size_t>(begin - bytes.begin()), static_cast<std::size_t>(end - begin)};
}

/// Puts another word of the text, or a whole number close by, in a word's place.
void changeWord(std::string& bytes, Dice& dice) {
    const Run word = wordAt(bytes, dice.below(bytes.size()));
    const Run other = wordAt(bytes, dice.below(bytes.size()));
    const std::string former = bytes.substr(word.begin, word.size);
    const bool isCount =
        !former.empty() && std::all_of(former.begin(), former.end(),
                                       [](unsigned char c) { return std::isdigit(c) != 0; });
    const std::size_t way = dice.below(4);
    std::string latter = bytes.substr(other.begin, other.size);
    if (isCount && way != 0) {
        const unsigned long long count = std::strtoull(former.c_str(), nullptr, 10);
        latter = std::to_string(way == 1 ? count + 1 : way == 2 ? count - 1 : count * 2);
    }
    bytes.replace(word.begin, word.size, latter);
}

/// The same with numbers of four bytes, where there is one that is not large.
void changeNumber(std::string& bytes, Dice& dice) {
    constexpr std::size_t size = sizeof(std::uint32_t);
    constexpr std::uint32_t highest = 100'000;
    constexpr int tries = 1000;
    if (bytes.size() < size)
        return;
    const auto find = [&](std::size_t& place) {
        std::uint32_t number = 0;
        for (int i = 0; i < tries && (number == 0 || number > highest); ++i) {
            place = dice.below(bytes.size() - size + 1);
            std::memcpy(&number, bytes.data() + place, size);
        }
        return number;
    };
    std::size_t place = 0;
    std::size_t otherPlace = 0;
    const std::uint32_t number = find(place);
    const std::uint32_t ways[] = {find(otherPlace), number + 1, number - 1, number * 2};
    std::memcpy(bytes.data() + place, &ways[dice.below(std::size(ways))], size);
}

/// @param bytes at least one.
/// @param kind below `kinds`.
void damage(std::string& bytes, std::size_t kind, const Extent& extent, Dice& dice) {
    switch (kind) {
    case 0:
        bytes.resize(dice.below(bytes.size()));
        break;
    case 1:
        changeBytes(bytes, extent.changes, dice);
        break;
    case 2:
        changeBits(bytes, extent.changes, dice);
        break;
    case 3: {
        const Run run = chooseRun(bytes, extent.run, dice);
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(run.begin), run.size, '\0');
        break;
    }
    case 4: {
        const Run run = chooseRun(bytes, extent.run, dice);
        bytes.erase(run.begin, run.size);
        break;
    }
    case 5: {
        const Run run = chooseRun(bytes, extent.run, dice);
        bytes.insert(dice.below(bytes.size()), bytes.substr(run.begin, run.size));
        break;
    }
    case 6:
        makeNumberAbsurd(bytes, dice);
        break;
    default:
        makeWordAbsurd(bytes, dice);
        break;
    }
}

} // namespace

std::string damaged(const std::string& bytes, std::uint64_t seed) {
    Dice dice(seed);
    std::string result = bytes;
    if (!result.empty())
        damage(result, dice.below(kinds), large, dice);
    return result;
}

std::string damagedMeaning(const std::string& bytes, std::uint64_t seed) {
    Dice dice(seed);
    std::string result = bytes;
    const bool isText = result.find('\0') == std::string::npos;
    const std::size_t changes = 1 + dice.below(mostMeanings);
    for (std::size_t i = 0; i < changes && !result.empty(); ++i)
        if (isText)
            changeWord(result, dice);
        else
            changeNumber(result, dice);
    return result;
}

std::string damagedOften(const std::string& bytes, std::uint64_t seed) {
    Dice dice(seed);
    std::string result = bytes;
    for (std::size_t left = 1 + dice.below(mostDamages); left > 0 && !result.empty(); --left)
        damage(result, 1 + dice.below(kinds - 1), small, dice);
    if (!result.empty() && dice.below(filesForOneCut) == 0)
        damage(result, 0, small, dice);
    return result;
}

} // namespace orbisk::test
