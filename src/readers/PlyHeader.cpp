#include "readers/PlyHeader.h"

#include "readers/SeparateLines.h"
#include "readers/TextWords.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace orbisk {

namespace {

struct TypeName {
    std::string_view name;
    PlyType type;
};

constexpr TypeName typeNames[] = {
    {"char", PlyType::Int8},       {"int8", PlyType::Int8},       {"uchar", PlyType::UInt8},
    {"uint8", PlyType::UInt8},     {"short", PlyType::Int16},     {"int16", PlyType::Int16},
    {"ushort", PlyType::UInt16},   {"uint16", PlyType::UInt16},   {"int", PlyType::Int32},
    {"int32", PlyType::Int32},     {"uint", PlyType::UInt32},     {"uint32", PlyType::UInt32},
    {"float", PlyType::Float32},   {"float32", PlyType::Float32}, {"double", PlyType::Float64},
    {"float64", PlyType::Float64},
};

std::optional<PlyType> typeOf(std::string_view name) {
    for (const TypeName& row : typeNames)
        if (row.name == name)
            return row.type;
    return std::nullopt;
}

std::optional<PlyFormat> formatOf(std::string_view name) {
    if (name == "ascii")
        return PlyFormat::Ascii;
    if (name == "binary_little_endian")
        return PlyFormat::LittleEndian;
    if (name == "binary_big_endian")
        return PlyFormat::BigEndian;
    return std::nullopt;
}

std::optional<PlyElement> parseElement(std::string_view line) {
    PlyElement element{std::string(takeWord(line)), 0, {}};
    const std::string_view rows = takeWord(line);
    const auto [end, error] = std::from_chars(rows.data(), rows.data() + rows.size(), element.rows);
    if (error != std::errc() || end != rows.data() + rows.size())
        return std::nullopt;
    return element;
}

std::optional<PlyProperty> parseProperty(std::string_view line) {
    std::string_view word = takeWord(line);
    std::optional<PlyType> countType;
    if (word == "list") {
        countType = typeOf(takeWord(line));
        if (!countType)
            return std::nullopt;
        word = takeWord(line);
    }
    const std::optional<PlyType> type = typeOf(word);
    const std::string_view name = takeWord(line);
    if (!type || name.empty())
        return std::nullopt;
    return PlyProperty{std::string(name), *type, countType};
}

/// What follows a comment's keyword; blanks before it go.
std::string commentText(std::string_view line) {
    const std::size_t begin = line.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string() : std::string(line.substr(begin));
}

/// Understands a header line by line.
class HeaderParser {
public:
    /// False where the line makes no sense; with the last one, `isComplete` becomes true.
    bool takeLine(std::string_view line) {
        const std::string_view keyword = takeWord(line);
        if (keyword == "format") {
            m_format = formatOf(takeWord(line));
            return m_format.has_value();
        }
        if (keyword == "element")
            return add(m_header.elements, parseElement(line));
        if (keyword == "property")
            return !m_header.elements.empty() &&
                   add(m_header.elements.back().properties, parseProperty(line));
        if (keyword == "comment")
            m_header.comments.push_back(commentText(line));
        else if (keyword == "end_header")
            m_complete = true;
        return true;
    }

    bool isComplete() const { return m_complete; }

    std::optional<PlyHeader> finish(std::size_t size) {
        if (!m_format)
            return std::nullopt;
        m_header.format = *m_format;
        m_header.size = size;
        return std::move(m_header);
    }

private:
    template <class Row>
    static bool add(std::vector<Row>& rows, std::optional<Row> row) {
        if (row)
            rows.push_back(std::move(*row));
        return row.has_value();
    }

    PlyHeader m_header{};
    std::optional<PlyFormat> m_format;
    bool m_complete = false;
};

} // namespace

std::size_t sizeOf(PlyType type) {
    switch (type) {
    case PlyType::Int8:
    case PlyType::UInt8:
        return 1;
    case PlyType::Int16:
    case PlyType::UInt16:
        return 2;
    case PlyType::Int32:
    case PlyType::UInt32:
    case PlyType::Float32:
        return 4;
    case PlyType::Float64:
        break;
    }
    return 8;
}

std::optional<std::size_t> PlyElement::find(std::initializer_list<std::string_view> names) const {
    const auto found = std::find_if(properties.begin(), properties.end(), [&](const auto& one) {
        return std::find(names.begin(), names.end(), one.name) != names.end();
    });
    if (found == properties.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - properties.begin());
}

std::size_t PlyElement::leastRowSize(PlyFormat format) const {
    // A digit and what parts it from the next.
    constexpr std::size_t leastText = 2;
    std::size_t size = 0;
    for (const PlyProperty& property : properties) {
        if (format != PlyFormat::Ascii)
            size += sizeOf(property.countType.value_or(property.type));
        else if (!property.countType)
            size += leastText;
    }
    return size;
}

std::optional<PlyHeader> parsePlyHeader(std::string_view file) {
    SeparateLines lines(file);
    if (!lines.next())
        return std::nullopt;
    std::string_view first = lines.line();
    if (takeWord(first) != "ply")
        return std::nullopt;
    HeaderParser parser;
    while (lines.next()) {
        if (!parser.takeLine(lines.line()))
            return std::nullopt;
        if (parser.isComplete())
            return parser.finish(file.size() - lines.rest().size());
    }
    return std::nullopt;
}

} // namespace orbisk
