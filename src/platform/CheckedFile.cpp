#include "platform/CheckedFile.h"

namespace orbisk {

CheckedFile::CheckedFile(const std::filesystem::path& path) : m_stream(&m_buffer) {
    m_buffer.open(path, std::ios::out | std::ios::binary | std::ios::trunc);
    if (!m_buffer.is_open())
        m_stream.setstate(std::ios::failbit);
}

bool CheckedFile::finish() {
    const bool closed = m_buffer.is_open() && m_buffer.close();
    return closed && !m_buffer.failed() && !m_buffer.empty() && m_stream.good();
}

CheckedFile::Buffer::int_type CheckedFile::Buffer::overflow(int_type character) {
    const int_type result = std::filebuf::overflow(character);
    m_failed |= traits_type::eq_int_type(result, traits_type::eof());
    m_empty = false;
    return result;
}

std::streamsize CheckedFile::Buffer::xsputn(const char* characters, std::streamsize count) {
    const std::streamsize taken = std::filebuf::xsputn(characters, count);
    m_failed |= taken != count;
    m_empty &= count == 0;
    return taken;
}

int CheckedFile::Buffer::sync() {
    const int result = std::filebuf::sync();
    m_failed |= result != 0;
    return result;
}

} // namespace orbisk
