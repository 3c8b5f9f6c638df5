#pragma once

#include "readers/WholeFileReader.h"

namespace orbisk {

/// Reads OBJ files: what the library's own reader makes of a good file this one makes too, faster,
/// with all digits, and no file can crash it or make it take more memory or time than a file of its
/// size may. It takes the same options. It writes nothing, which is left to the library's writer.
class ObjReader : public WholeFileReader {
public:
    ObjReader();

    const char* className() const override;

    using WholeFileReader::readNode;
    using WholeFileReader::readObject;

    ReadResult readBytes(FileBytes bytes, const std::string& fileName,
                         const Options* options) const override;

    /// The same from a stream, which is read to its end; what the file refers to is looked for by
    /// `options` alone.
    ReadResult readNode(std::istream& stream, const Options* options) const override;
    ReadResult readObject(std::istream& stream, const Options* options) const override;

protected:
    ~ObjReader() override = default;
};

} // namespace orbisk
