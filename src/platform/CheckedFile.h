#pragma once

#include <filesystem>
#include <fstream>
#include <ostream>

namespace orbisk {

/// A file to be written that knows at the end whether all of it was taken. Writers look at a stream
/// before its last bytes are flushed, or not at all, or wrap its buffer into a stream of their own
/// and lose what that one noted; here the buffer itself remembers every failure.
class CheckedFile {
public:
    /// Opens the file, empty. One that cannot be opened takes nothing and fails at the end.
    explicit CheckedFile(const std::filesystem::path& path);

    /// For the whole life of this object.
    std::ostream& stream() { return m_stream; }

    /// Closes the file; nothing may be written to it from then on.
    /// @return whether everything that was written stands in it, and whether that is anything.
    bool finish();

private:
    class Buffer : public std::filebuf {
    public:
        bool failed() const { return m_failed; }
        bool empty() const { return m_empty; }

    protected:
        int_type overflow(int_type character) override;
        std::streamsize xsputn(const char* characters, std::streamsize count) override;
        int sync() override;

    private:
        bool m_failed = false;
        bool m_empty = true;
    };

    Buffer m_buffer;
    std::ostream m_stream;
};

} // namespace orbisk
