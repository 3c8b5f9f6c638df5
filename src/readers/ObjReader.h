#pragma once

#include <osgDB/ReaderWriter>

namespace orbisk {

/// Reads OBJ files: what the library's own reader makes of a good file this one makes too, faster,
/// with all digits, and no file can crash it or make it take more memory or time than a file of its
/// size may. It takes the same options. It writes nothing, which is left to the library's writer.
/// Reading changes nothing in the object, so that several threads may read at once.
class ObjReader : public osgDB::ReaderWriter {
public:
    ObjReader();

    const char* className() const override;

    /// Looks for the file as the library does. @return `FILE_NOT_HANDLED` for another extension,
    /// `FILE_NOT_FOUND` where there is none of the name, `ERROR_IN_READING_FILE` where the file
    /// can't be read or shows nothing.
    ReadResult readNode(const std::string& name, const Options* options) const override;
    ReadResult readObject(const std::string& name, const Options* options) const override;

    /// The same from a stream; what the file refers to is looked for by `options` alone.
    ReadResult readNode(std::istream& stream, const Options* options) const override;
    ReadResult readObject(std::istream& stream, const Options* options) const override;

protected:
    ~ObjReader() override = default;
};

} // namespace orbisk
