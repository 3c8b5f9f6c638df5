#pragma once

#include <string_view>

namespace orbisk {

/// Whether `character` separates words: a blank, a tab, or another of the "C" locale's white space.
inline bool isBlank(char character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// `text` without the blanks at its beginning.
std::string_view withoutLeadingBlanks(std::string_view text);

/// `text` without the blanks at either end.
std::string_view trimmed(std::string_view text);

/// Takes the next word off the front of `text`, with the blanks before it; empty where none is
/// left.
std::string_view takeWord(std::string_view& text);

/// Takes a decimal number off the front of `text`, with the blanks before it, whatever locale is
/// set: a sign, digits with a point, an exponent, or "nan", "inf". Numbers too large become
/// infinite, numbers too small 0.
/// @return whether there was one; if not, `text` and `value` stay as they are. `value` is the
/// double nearest to the text, or its neighbour where only that one, rounded to a float, gives the
/// float nearest to the text.
bool takeNumber(std::string_view& text, double& value);

/// Takes a whole number off the front of `text`, with the blanks before it. One that no int can
/// hold becomes 0. @return whether there was one; if not, nothing changes.
bool takeInteger(std::string_view& text, int& value);

/// The number that a word begins with, read like `takeNumber` does; NaN where it begins with none.
double numberOf(std::string_view word);

/// Whether `text` begins with `word`, letters of either case alike; `word` is in lower case.
bool beginsWithWord(std::string_view text, std::string_view word);

/// Whether `text` is `word`, letters of either case alike; `word` is in lower case.
inline bool isWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() && beginsWithWord(text, word);
}

} // namespace orbisk
