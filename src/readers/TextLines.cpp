#include "readers/TextLines.h"

#include "readers/TextWords.h"

namespace orbisk {

TextLines::PhysicalLine TextLines::takePhysicalLine() {
    const std::string_view upToNewline = m_text.substr(m_at, m_newline - m_at);
    const std::string_view text = upToNewline.substr(0, upToNewline.find('\r'));
    const bool ended = text.size() < upToNewline.size() || m_newline != std::string_view::npos;
    m_at += text.size();
    if (m_at + 1 == m_newline)
        ++m_at;
    if (m_at < m_text.size())
        ++m_at;
    // Not looked for again before it is passed: a file may have but one, at its end.
    if (m_newline != std::string_view::npos && m_newline < m_at)
        m_newline = m_text.find('\n', m_at);
    return {text, ended};
}

bool TextLines::next() {
    if (m_at >= m_text.size())
        return false;
    const PhysicalLine line = takePhysicalLine();
    if (line.ended && !line.text.empty() && line.text.back() == '\\')
        join(line.text);
    else
        m_line = trimmed(line.text);
    return true;
}

void TextLines::join(std::string_view first) {
    m_joined.clear();
    PhysicalLine line{first, true};
    while (line.ended && !line.text.empty() && line.text.back() == '\\') {
        m_joined.append(line.text.substr(0, line.text.size() - 1)).push_back(' ');
        line = takePhysicalLine();
    }
    m_joined.append(line.text);
    m_line = trimmed(m_joined);
}

} // namespace orbisk
