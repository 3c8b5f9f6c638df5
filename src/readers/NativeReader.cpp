#include "readers/NativeReader.h"

#include "readers/BinaryInput.h"
#include "readers/SaferSerializers.h"
#include "readers/TextInput.h"

#include <osg/Image>
#include <osg/Node>
#include <osgDB/DataTypes>
#include <osgDB/FileNameUtils>
#include <osgDB/FileUtils>
#include <osgDB/InputStream>

#include <array>
#include <cstdint>
#include <functional>

namespace orbisk {

namespace {

using Result = osgDB::ReaderWriter::ReadResult;

/// What a binary file begins with, in the writer's order of bytes.
constexpr std::array<std::uint32_t, 2> binaryMark = {OSG_HEADER_LOW, OSG_HEADER_HIGH};
constexpr const char* textMark = "#Ascii";

std::uint32_t swapped(std::uint32_t number) {
    return number >> 24 | (number >> 8 & 0xff00u) | (number << 8 & 0xff0000u) | number << 24;
}

osg::ref_ptr<NativeInput> inputFor(std::istream& stream) {
    std::array<std::uint32_t, 2> mark{};
    stream.read(reinterpret_cast<char*>(mark.data()), sizeof mark);
    if (mark == binaryMark)
        return new BinaryInput(stream, false);
    if (mark[0] == swapped(binaryMark[0]) && mark[1] == swapped(binaryMark[1]))
        return new BinaryInput(stream, true);
    stream.clear();
    stream.seekg(0);
    std::string word;
    if (stream >> word && word == textMark)
        return new TextInput(stream);
    return nullptr;
}

/// What the library's packaged reader tells those that read the files that this one refers to.
osg::ref_ptr<osgDB::Options> optionsBeside(const std::string& path, const std::string& extension,
                                           const osgDB::Options* options) {
    osg::ref_ptr<osgDB::Options> result =
        options ? static_cast<osgDB::Options*>(options->clone(osg::CopyOp::SHALLOW_COPY))
                : new osgDB::Options;
    result->getDatabasePathList().push_front(osgDB::getFilePath(path));
    result->setPluginStringData("fileType", extension == "osgt"   ? "Ascii"
                                            : extension == "osgb" ? "Binary"
                                                                  : "");
    return result;
}

Result failure(const osgDB::InputStream& stream) {
    const osgDB::InputException& exception = *stream.getException();
    return exception.getError() + " At " + exception.getField();
}

using Content = std::function<osg::ref_ptr<osg::Object>(osgDB::InputStream&, int type)>;

/// Reads a file; `content` reads what comes after its head.
Result read(const osgDB::ReaderWriter& reader, const std::string& name,
            const osgDB::Options* options, const Content& content) {
    const std::string extension = osgDB::getLowerCaseFileExtension(name);
    if (!reader.acceptsExtension(extension))
        return Result::FILE_NOT_HANDLED;
    const std::string path = osgDB::findDataFile(name, options);
    if (path.empty())
        return Result::FILE_NOT_FOUND;
    installSaferSerializers();
    osgDB::ifstream file(path.c_str(), std::ios::binary);
    const osg::ref_ptr<NativeInput> input = inputFor(file);
    if (!input)
        return Result::FILE_NOT_HANDLED;
    const osg::ref_ptr<osgDB::Options> beside = optionsBeside(path, extension, options);
    osgDB::InputStream stream(beside);
    // A number of the file's, which need not be one of the enumeration.
    const int type = static_cast<int>(stream.start(input));
    if (!stream.getException())
        stream.decompress();
    if (stream.getException())
        return failure(stream);
    const osg::ref_ptr<osg::Object> object = content(stream, type);
    if (stream.getException())
        return failure(stream);
    return object ? Result(object) : Result(Result::FILE_NOT_HANDLED);
}

} // namespace

NativeReader::NativeReader() {
    supportsExtension("osgb", "native format, binary");
    supportsExtension("osgt", "native format, text");
    supportsExtension("osg2", "native format, either");
}

NativeReader::~NativeReader() = default;

const char* NativeReader::className() const {
    return "NativeReader";
}

Result NativeReader::readObject(const std::string& path, const Options* options) const {
    return read(*this, path, options, [](osgDB::InputStream& stream, auto type) {
        return type == osgDB::InputStream::READ_UNKNOWN ? nullptr : stream.readObject();
    });
}

Result NativeReader::readNode(const std::string& path, const Options* options) const {
    return read(*this, path, options,
                [](osgDB::InputStream& stream, auto type) -> osg::ref_ptr<osg::Object> {
                    if (type != osgDB::InputStream::READ_SCENE &&
                        type != osgDB::InputStream::READ_OBJECT)
                        return nullptr;
                    return stream.readObjectOfType<osg::Node>();
                });
}

Result NativeReader::readImage(const std::string& path, const Options* options) const {
    return read(*this, path, options,
                [](osgDB::InputStream& stream, auto type) -> osg::ref_ptr<osg::Object> {
                    if (type != osgDB::InputStream::READ_IMAGE)
                        return nullptr;
                    return stream.readImage();
                });
}

} // namespace orbisk
