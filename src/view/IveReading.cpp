#include "view/IveReading.h"

#include "readers/FileBytes.h"
#include "readers/IveLook.h"
#include "view/ReadRules.h"

#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/Registry>

#include <istream>
#include <optional>
#include <streambuf>
#include <string_view>
#include <utility>

namespace orbisk {

namespace {

using Result = osgDB::ReaderWriter::ReadResult;

/// Bytes as what a stream reads.
class BytesBuffer : public std::streambuf {
public:
    explicit BytesBuffer(std::string_view bytes) {
        char* begin = const_cast<char*>(bytes.data());
        setg(begin, begin, begin + bytes.size());
    }
};

osg::ref_ptr<osgDB::Options> optionsBeside(const std::string& path, const osgDB::Options* options) {
    osg::ref_ptr<osgDB::Options> result =
        options ? static_cast<osgDB::Options*>(options->clone(osg::CopyOp::SHALLOW_COPY))
                : new osgDB::Options;
    result->getDatabasePathList().push_front(osgDB::getFilePath(path));
    return result;
}

} // namespace

Result readIve(const std::string& name, const osgDB::Options* options) {
    const std::string path = osgDB::findDataFile(name, options);
    if (path.empty())
        return Result::FILE_NOT_FOUND;
    const osgDB::ReaderWriter* reader =
        osgDB::Registry::instance()->getReaderWriterForExtension("ive");
    if (!reader)
        return Result::FILE_NOT_HANDLED;
    std::optional<FileBytes> file = FileBytes::read(path);
    if (!file)
        return Result::ERROR_IN_READING_FILE;
    std::string_view bytes = file->view();
    std::string unpacked;
    if (isPackedIve(bytes)) {
        std::optional<std::string> content = unpackedIve(bytes);
        if (!content)
            return Result("the file cannot be unpacked");
        unpacked = std::move(*content);
        bytes = unpacked;
        file.reset();
    }
    if (const auto refusal = iveRefusal(bytes, isImageName))
        return Result(*refusal);
    BytesBuffer buffer(bytes);
    std::istream stream(&buffer);
    stream.exceptions(std::ios::failbit | std::ios::badbit);
    return reader->readNode(stream, optionsBeside(path, options));
}

} // namespace orbisk
