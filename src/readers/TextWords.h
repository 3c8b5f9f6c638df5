#pragma once

#include <string_view>

namespace orbisk {

/// Goes through the lines of a text one by one, which `TextLines` may join; a line ends with a line
/// feed, before which a carriage return is left out, or with the text.
class SeparateLines {
public:
    explicit SeparateLines(std::string_view text) : m_rest(text) {}

    /// Moves to the next line; false at the end of the text.
    bool next();

    std::string_view line() const { return m_line; }

    /// What follows the line.
    std::string_view rest() const { return m_rest; }

private:
    std::string_view m_rest;
    std::string_view m_line;
};

/// Takes the next word off a line: `line` begins after it then. Empty where there is none. Words
/// stand between blanks and tabs.
std::string_view nextWord(std::string_view& line);

/// The number that a word begins with, whatever the locale; infinite and "nan" are read as such.
/// What is no number, or too large for one, is NaN; what is too small is 0.
double numberOf(std::string_view word);

} // namespace orbisk
