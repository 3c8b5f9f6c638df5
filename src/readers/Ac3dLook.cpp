#include "readers/Ac3dLook.h"

#include "readers/FileBytes.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace orbisk {

namespace {

constexpr std::size_t deepestPart = 400;
constexpr unsigned int mostCornersAtAVertex = 2000;

class Ac3dLook {
public:
    explicit Ac3dLook(std::string_view text) : m_text(text) {}

    std::optional<std::string> run() {
        for (std::string_view word; !m_fault && next(word);)
            take(word);
        return m_fault;
    }

private:
    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    void skipSpace() {
        while (m_place < m_text.size() && isSpace(m_text[m_place]))
            ++m_place;
    }

    bool next(std::string_view& word) {
        skipSpace();
        const std::size_t begin = m_place;
        while (m_place < m_text.size() && !isSpace(m_text[m_place]))
            ++m_place;
        word = m_text.substr(begin, m_place - begin);
        return !word.empty();
    }

    /// A count, of which each element takes a byte or more.
    std::size_t nextCount() {
        std::string_view word;
        next(word);
        const long long count = std::strtoll(std::string(word).c_str(), nullptr, 10);
        if (count < 0 || static_cast<unsigned long long>(count) > m_text.size() - m_place)
            m_fault = "more elements are announced than the file has bytes";
        return m_fault ? 0 : static_cast<std::size_t>(count);
    }

    /// A name, which may be in quotes and then have spaces.
    void skipName() {
        skipSpace();
        if (m_place < m_text.size() && m_text[m_place] == '"') {
            const std::size_t end = m_text.find('"', m_place + 1);
            m_place = end == std::string_view::npos ? m_text.size() : end + 1;
            return;
        }
        std::string_view word;
        next(word);
    }

    void take(std::string_view word) {
        if (word == "name" || word == "texture" || word == "url")
            skipName();
        else if (word == "data")
            m_place += nextCount();
        else if (word == "numvert")
            m_corners.assign(nextCount(), 0);
        else if (word == "numsurf")
            nextCount();
        else if (word == "refs")
            takeCorners(nextCount());
        else if (word == "kids")
            takeParts(nextCount());
    }

    void takeCorners(std::size_t count) {
        std::string_view word;
        for (std::size_t i = 0; i < count && next(word); ++i) {
            const auto vertex = std::strtoull(std::string(word).c_str(), nullptr, 10);
            if (vertex < m_corners.size() && ++m_corners[vertex] > mostCornersAtAVertex)
                m_fault = "too many faces meet at a vertex";
            next(word);
            next(word);
        }
    }

    void takeParts(std::size_t count) {
        if (count > 0) {
            m_partsToCome.push_back(count);
            if (m_partsToCome.size() > deepestPart)
                m_fault = "parts are nested too deeply";
            return;
        }
        while (!m_partsToCome.empty() && --m_partsToCome.back() == 0)
            m_partsToCome.pop_back();
    }

    std::string_view m_text;
    std::size_t m_place = 0;
    std::vector<unsigned int> m_corners;    ///< that meet at each vertex of the part
    std::vector<std::size_t> m_partsToCome; ///< of each part that is open
    std::optional<std::string> m_fault;
};

} // namespace

std::optional<std::string> ac3dRefusal(const std::string& path) {
    const std::optional<FileBytes> bytes = FileBytes::read(path);
    return bytes ? Ac3dLook(bytes->view()).run() : std::nullopt;
}

} // namespace orbisk
