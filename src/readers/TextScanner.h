#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orbisk {

/// The lines of a text file in memory, whatever ends them ("\n", "\r\n" or "\r"), without the
/// blanks and tabs around them. A backslash at a line's end joins the next one to it, with a blank
/// between the two. Copies nothing but joined lines, and a line may have any length. The text must
/// outlive the object.
class TextLines {
public:
    explicit TextLines(std::string_view text) : m_text(text), m_newline(text.find('\n')) {}

    /// Goes to the next line. @return false at the end of the text.
    bool next();

    /// The line that the last `next` went to, valid until the next one.
    std::string_view line() const { return m_line; }

private:
    struct PhysicalLine {
        std::string_view text;
        bool ended; ///< by an end of line, not by the end of the text
    };

    PhysicalLine takePhysicalLine();
    void join(std::string_view first);

    std::string_view m_text;
    std::size_t m_at = 0;
    std::size_t m_newline; ///< the first one from m_at on; npos where there is none
    std::string_view m_line;
    std::string m_joined;
};

/// Whether `character` separates words of a line.
inline bool isBlank(char character) {
    return character == ' ' || character == '\t';
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

/// Whether `text` begins with `word`, letters of either case alike; `word` is in lower case.
bool beginsWithWord(std::string_view text, std::string_view word);

} // namespace orbisk
