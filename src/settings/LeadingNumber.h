#pragma once

#include <string>

namespace orbisk {

/// The number with which `text` begins, as the C locale writes numbers and whatever the locale in
/// force: blanks before it and anything behind it do not count. Without digits it is 0; "inf" and
/// hexadecimal digits are numbers too.
double leadingNumber(std::string text);

} // namespace orbisk
