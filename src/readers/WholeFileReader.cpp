#include "readers/WholeFileReader.h"

#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/fstream>

#include <cstddef>
#include <memory>

namespace orbisk {

osgDB::ReaderWriter::ReadResult WholeFileReader::readNode(const std::string& file,
                                                          const osgDB::Options* options) const {
    if (!acceptsExtension(osgDB::getLowerCaseFileExtension(file)))
        return ReadResult::FILE_NOT_HANDLED;
    const std::string fileName = osgDB::findDataFile(file, options);
    if (fileName.empty())
        return ReadResult::FILE_NOT_FOUND;
    // A folder or a pipe has no size to go by.
    if (osgDB::fileType(fileName) != osgDB::REGULAR_FILE)
        return ReadResult::ERROR_IN_READING_FILE;
    osgDB::ifstream stream(fileName.c_str(), std::ios::binary | std::ios::ate);
    const std::streamoff end = stream.tellg();
    if (!stream || end < 0)
        return ReadResult::ERROR_IN_READING_FILE;
    const auto size = static_cast<std::size_t>(end);
    // Not a string or a vector: they would write every byte once before the file does.
    const std::unique_ptr<char[]> bytes(new char[size]);
    stream.seekg(0);
    if (!stream.read(bytes.get(), end))
        return ReadResult::ERROR_IN_READING_FILE;
    return readBytes({bytes.get(), size}, fileName, options);
}

osgDB::ReaderWriter::ReadResult WholeFileReader::readObject(const std::string& file,
                                                            const osgDB::Options* options) const {
    return readNode(file, options);
}

} // namespace orbisk
