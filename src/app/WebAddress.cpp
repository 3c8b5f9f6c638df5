#include "app/WebAddress.h"

#include <cstdio>

namespace orbisk {

namespace {
constexpr std::size_t digitsPerCharacter = 2;
}

std::string decodeHexText(std::string_view digits) {
    std::string text;
    for (std::size_t i = 0; i + digitsPerCharacter <= digits.size(); i += digitsPerCharacter) {
        const std::string pair(digits.substr(i, digitsPerCharacter));
        unsigned int character = 0;
        int used = 0;
        if (std::sscanf(pair.c_str(), "%2x%n", &character, &used) != 1 ||
            used != static_cast<int>(digitsPerCharacter))
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
