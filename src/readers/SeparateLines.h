#pragma once

#include <string_view>

namespace orbisk {

/// Goes through the lines of a text in memory one by one, each as it stands; a line ends with a
/// line feed, before which a carriage return is left out, or with the text. Bytes that are no text
/// may follow the last line that is asked for. Copies nothing; the text must outlive the object.
/// See `TextLines` for a format whose lines may be joined.
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

} // namespace orbisk
