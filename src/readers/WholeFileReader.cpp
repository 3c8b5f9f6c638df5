#include "readers/WholeFileReader.h"

#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>

#include <optional>
#include <utility>

namespace orbisk {

osgDB::ReaderWriter::ReadResult WholeFileReader::readNode(const std::string& file,
                                                          const osgDB::Options* options) const {
    if (!acceptsExtension(osgDB::getLowerCaseFileExtension(file)))
        return ReadResult::FILE_NOT_HANDLED;
    const std::string fileName = osgDB::findDataFile(file, options);
    if (fileName.empty())
        return ReadResult::FILE_NOT_FOUND;
    std::optional<FileBytes> bytes = FileBytes::read(fileName);
    if (!bytes)
        return ReadResult::ERROR_IN_READING_FILE;
    return readBytes(std::move(*bytes), fileName, options);
}

osgDB::ReaderWriter::ReadResult WholeFileReader::readObject(const std::string& file,
                                                            const osgDB::Options* options) const {
    return readNode(file, options);
}

} // namespace orbisk
