#include "readers/PlyRows.h"

#include "readers/TextWords.h"

#include <cstdint>

namespace orbisk {

namespace {

double loadAs(PlyType type, const char* at, bool foreign) {
    switch (type) {
    case PlyType::Int8:
        return loadNumber<std::int8_t>(at, false);
    case PlyType::UInt8:
        return loadNumber<std::uint8_t>(at, false);
    case PlyType::Int16:
        return loadNumber<std::int16_t>(at, foreign);
    case PlyType::UInt16:
        return loadNumber<std::uint16_t>(at, foreign);
    case PlyType::Int32:
        return loadNumber<std::int32_t>(at, foreign);
    case PlyType::UInt32:
        return loadNumber<std::uint32_t>(at, foreign);
    case PlyType::Float32:
        return static_cast<double>(loadNumber<float>(at, foreign));
    case PlyType::Float64:
        break;
    }
    return loadNumber<double>(at, foreign);
}

} // namespace

bool PlyTextRows::read(const PlyElement& element, PlyRowReceiver* receiver) {
    if (element.properties.empty())
        return true;
    for (std::uint64_t row = 0; row < element.rows; ++row) {
        std::string_view words;
        do {
            if (!m_lines.next())
                return false;
            words = m_lines.line();
        } while (takeWord(words).empty());
        if (receiver && !readRow(element, receiver, m_lines.line()))
            return false;
    }
    return true;
}

bool PlyTextRows::readRow(const PlyElement& element, PlyRowReceiver* receiver,
                          std::string_view line) {
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        if (element.properties[i].countType) {
            if (!readList(line))
                return false;
            receiver->list(i, m_list);
            continue;
        }
        const std::string_view word = takeWord(line);
        if (word.empty())
            return false;
        receiver->number(i, numberOf(word));
    }
    receiver->endRow();
    return true;
}

bool PlyTextRows::readList(std::string_view& line) {
    m_list.clear();
    const std::string_view length = takeWord(line);
    if (length.empty())
        return true;
    const double count = numberOf(length);
    if (!(count >= 0.0))
        return false;
    while (static_cast<double>(m_list.size()) < count) {
        const std::string_view word = takeWord(line);
        if (word.empty())
            return false;
        m_list.push_back(numberOf(word));
    }
    return true;
}

bool PlyBinaryRows::read(const PlyElement& element, PlyRowReceiver* receiver) {
    if (element.properties.empty())
        return true;
    for (std::uint64_t row = 0; row < element.rows; ++row)
        if (!readRow(element, receiver))
            return false;
    return true;
}

bool PlyBinaryRows::readRow(const PlyElement& element, PlyRowReceiver* receiver) {
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        const PlyProperty& property = element.properties[i];
        if (property.countType) {
            if (!readList(property, receiver != nullptr))
                return false;
            if (receiver)
                receiver->list(i, m_list);
            continue;
        }
        if (remaining() < sizeOf(property.type))
            return false;
        const double value = take(property.type);
        if (receiver)
            receiver->number(i, value);
    }
    if (receiver)
        receiver->endRow();
    return true;
}

bool PlyBinaryRows::readList(const PlyProperty& property, bool wanted) {
    if (remaining() < sizeOf(*property.countType))
        return false;
    const double count = take(*property.countType);
    const std::size_t size = sizeOf(property.type);
    const std::size_t most = remaining() / size;
    if (!(count >= 0.0 && count <= static_cast<double>(most)))
        return false;
    const auto length = static_cast<std::size_t>(count);
    if (!wanted) {
        m_at += length * size;
        return true;
    }
    m_list.resize(length);
    for (double& value : m_list)
        value = take(property.type);
    return true;
}

double PlyBinaryRows::take(PlyType type) {
    const double value = loadAs(type, m_at, m_foreign);
    m_at += sizeOf(type);
    return value;
}

} // namespace orbisk
