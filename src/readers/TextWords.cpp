#include "readers/TextWords.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <limits>
#include <system_error>

namespace orbisk {

namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

bool isBlank(char letter) {
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\f' || letter == '\v';
}

/// Whether a number that no double can hold is one for being too near to zero.
bool isTiny(std::string_view word) {
    const std::size_t exponent = word.find_first_of("eE");
    if (exponent != std::string_view::npos)
        return word.substr(exponent + 1, 1) == "-";
    const std::size_t first = word.find_first_not_of('-');
    return first != std::string_view::npos && (word[first] == '0' || word[first] == '.');
}

} // namespace

bool SeparateLines::next() {
    if (m_rest.empty())
        return false;
    const auto* found = static_cast<const char*>(std::memchr(m_rest.data(), '\n', m_rest.size()));
    const std::size_t length =
        found ? static_cast<std::size_t>(found - m_rest.data()) : m_rest.size();
    m_line = m_rest.substr(0, length);
    m_rest.remove_prefix(found ? length + 1 : length);
    if (!m_line.empty() && m_line.back() == '\r')
        m_line.remove_suffix(1);
    return true;
}

std::string_view nextWord(std::string_view& line) {
    std::size_t begin = 0;
    while (begin < line.size() && isBlank(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && !isBlank(line[end]))
        ++end;
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

double numberOf(std::string_view word) {
    if (!word.empty() && word.front() == '+')
        word.remove_prefix(1);
    double number = noNumber;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error == std::errc::result_out_of_range)
        return isTiny(word) ? 0.0 : noNumber;
    return error == std::errc() ? number : noNumber;
}

} // namespace orbisk
