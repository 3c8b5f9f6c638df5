#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orbisk {

/// Number of bytes that base64 of these characters decodes to, without decoding it: padding at the
/// end counts nothing, and a text whose 77th character is a line feed is taken to have one at the
/// end of every 76 characters.
std::size_t decodedTipSize(std::string_view base64);

/// The bytes of a tip as the server sends it: base64 in the standard alphabet with padding, in one
/// piece or in lines of 76 characters, each ended by a line feed. A line feed is skipped where a
/// group of four characters begins, and at the very end; characters left over after the last whole
/// group give a byte if there are two of them, two bytes if there are three, none otherwise. Empty
/// when any other character than those of the alphabet stands in the text.
std::string decodeTip(std::string_view base64);

} // namespace orbisk
