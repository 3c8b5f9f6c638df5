#include "app/WebAddress.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace orbisk {

namespace {
constexpr std::size_t digitsPerCharacter = 2;
}

std::string decodeHexText(std::string_view digits) {
    const auto isDigit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    std::string text;
    for (std::size_t i = 0; i + digitsPerCharacter <= digits.size(); i += digitsPerCharacter) {
        const std::string pair(digits.substr(i, digitsPerCharacter));
        unsigned int character = 0;
        if (!std::all_of(pair.begin(), pair.end(), isDigit) ||
            std::sscanf(pair.c_str(), "%2x", &character) != 1)
            break;
        text.push_back(static_cast<char>(character));
    }
    return text;
}

std::string_view makerWebAddressDigits() {
    return ORBISK_MAKER_WEB_ADDRESS_DIGITS;
}

std::string& webAddress() {
    static std::string address;
    return address;
}

} // namespace orbisk
