#pragma once

#include <string>

namespace orbisk {

/// Appends the shortest text that stands for just this number, in the "C" locale.
void appendNumber(std::string& out, float number);
void appendNumber(std::string& out, double number);
void appendNumber(std::string& out, std::size_t number);

} // namespace orbisk
