#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orbisk {

/// The lines of a text in memory in a format that lets a line go on in the next one, whatever ends
/// them ("\n", "\r\n" or "\r"), without the blanks around them. A backslash at a line's end joins
/// the next one to it, with a blank between the two. Copies nothing but joined lines, and a line
/// may have any length. The text must outlive the object. See `SeparateLines` for formats whose
/// text is followed by bytes.
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

} // namespace orbisk
