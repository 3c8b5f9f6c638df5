#pragma once

#include <cstddef>
#include <string>

namespace orbisk {

/// Adds a coordinate, length or area to `text`, with three decimals and a dot whatever the locale:
/// what "%.3f" prints in the C locale, of any size and for infinities and NaN too.
void appendDecimal(std::string& text, double value);

/// Adds a number that counts from one: that of the place `index`.
void appendOrdinal(std::string& text, std::size_t index);

} // namespace orbisk
