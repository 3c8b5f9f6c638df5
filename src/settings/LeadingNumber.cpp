#include "settings/LeadingNumber.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>

namespace orbisk {

double leadingNumber(std::string text) {
    // The C library goes by the locale: its decimal point ends a number here, and the dot takes
    // its place.
    const std::string point = std::localeconv()->decimal_point;
    if (point != ".") {
        text.erase(std::min(text.find(point), text.size()));
        if (const auto dot = text.find('.'); dot != std::string::npos)
            text.replace(dot, 1, point);
    }
    return std::strtod(text.c_str(), nullptr);
}

} // namespace orbisk
