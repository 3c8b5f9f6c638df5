#pragma once

#include <string>
#include <string_view>

namespace orbisk {

/// Text of a run of hexadecimal digit pairs, two digits a character. A pair that is not two
/// hexadecimal digits ends the text there.
std::string decodeHexText(std::string_view digits);

/// The maker's web site, as the program keeps it: in hexadecimal digit pairs.
std::string_view makerWebAddressDigits();

/// The web address that the status bar and the web-site command open: one text for the process,
/// set by the main frame. Main thread.
std::string& webAddress();

} // namespace orbisk
