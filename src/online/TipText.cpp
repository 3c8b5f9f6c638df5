#include "online/TipText.h"

#include <array>
#include <cstdint>

namespace orbisk {

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';
constexpr char lineFeed = '\n';
constexpr std::size_t lineLength = 76;
constexpr std::size_t groupLength = 4;
constexpr std::size_t bytesInGroup = 3;
constexpr unsigned int bitsInCharacter = 6;
constexpr unsigned int bitsInByte = 8;
constexpr unsigned int bitsInGroup = 24;
constexpr std::int8_t notInAlphabet = -1;

using Values = std::array<std::int8_t, 256>;

constexpr Values alphabetValues() {
    Values values{};
    for (auto& value : values)
        value = notInAlphabet;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        values[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    return values;
}

/// The text without what ends it: one line feed, then up to two padding characters.
std::string_view withoutEnd(std::string_view base64) {
    if (!base64.empty() && base64.back() == lineFeed)
        base64.remove_suffix(1);
    for (int i = 0; i < 2 && !base64.empty() && base64.back() == padding; ++i)
        base64.remove_suffix(1);
    return base64;
}

/// Bytes that `count` characters, of which four make a whole group, decode to.
std::size_t byteCount(std::size_t count) {
    const std::size_t left = count % groupLength;
    return count / groupLength * bytesInGroup + (left > 1 ? left - 1 : 0);
}

/// Appends the bytes of a group of up to four characters. @return whether all are in the alphabet.
bool appendGroup(std::string_view group, std::string& bytes) {
    static constexpr Values values = alphabetValues();
    std::uint32_t bits = 0;
    unsigned int place = bitsInGroup;
    for (const char c : group) {
        const std::int8_t value = values[static_cast<unsigned char>(c)];
        if (value == notInAlphabet)
            return false;
        place -= bitsInCharacter;
        bits |= static_cast<std::uint32_t>(value) << place;
    }
    std::array<char, bytesInGroup> decoded{};
    for (auto byte = decoded.rbegin(); byte != decoded.rend(); ++byte) {
        *byte = static_cast<char>(bits & 0xffU);
        bits >>= bitsInByte;
    }
    bytes.append(decoded.data(), byteCount(group.size()));
    return true;
}

} // namespace

std::size_t decodedTipSize(std::string_view base64) {
    const std::string_view text = withoutEnd(base64);
    const bool wrapped = text.size() > lineLength && text[lineLength] == lineFeed;
    return byteCount(wrapped ? text.size() - text.size() / (lineLength + 1) : text.size());
}

std::string decodeTip(std::string_view base64) {
    std::string bytes;
    bytes.reserve(decodedTipSize(base64));
    std::string_view left = withoutEnd(base64);
    while (!left.empty()) {
        if (left.front() == lineFeed) {
            left.remove_prefix(1);
            continue;
        }
        const std::string_view group = left.substr(0, groupLength);
        if (!appendGroup(group, bytes))
            return {};
        left.remove_prefix(group.size());
    }
    return bytes;
}

} // namespace orbisk
