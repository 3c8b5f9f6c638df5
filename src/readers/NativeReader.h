#pragma once

#include <osgDB/Options>
#include <osgDB/ReaderWriter>

#include <istream>
#include <string>

namespace orbisk {

/// Reads the library's native formats (osgb, osgt, osg2) by the library's own classes, but takes
/// the words of the file itself (`BinaryInput`, `TextInput`): with a damaged file the packaged
/// reader reads garbage for ever, fills the memory or breaks. What it makes of a good file is the
/// same.
///
/// Has no state: any number of threads may read with it.
class NativeReader : public osgDB::ReaderWriter {
public:
    NativeReader();
    ~NativeReader() override;

    const char* className() const override;

    /// Throws `DamagedFile`, besides what the results can say. A file in XML, which may have these
    /// extensions as well, is not handled.
    ReadResult readObject(const std::string& path, const Options* options) const override;
    ReadResult readNode(const std::string& path, const Options* options) const override;
    ReadResult readImage(const std::string& path, const Options* options) const override;
};

} // namespace orbisk
