#include "readers/BinaryInput.h"

#include <osg/Endian>
#include <osgDB/InputStream>

#include <istream>

namespace orbisk {

namespace {

/// From this version of the format on a block tells its size in eight bytes, before in four.
constexpr int firstVersionOfLongBlocks = 149;

/// Whether a word can be the class of an object. Images have no block.
bool mayBeObject(const std::string& word) {
    return word.compare(0, 3, "osg") == 0 && word.find("::") != std::string::npos &&
           word.compare(0, 10, "osg::Image") != 0;
}

} // namespace

BinaryInput::BinaryInput(std::istream& stream, bool isSwapped) : NativeInput(stream) {
    setByteSwap(isSwapped ? 1 : 0);
}

void BinaryInput::take(char* bytes, std::size_t size) {
    if (!_in->read(bytes, static_cast<std::streamsize>(size)))
        fail("the file ends too early");
}

template <typename Value>
Value BinaryInput::take() {
    Value value{};
    char* bytes = reinterpret_cast<char*>(&value);
    take(bytes, sizeof value);
    if (_byteSwap)
        osg::swapBytes(bytes, sizeof value);
    return value;
}

void BinaryInput::readBool(bool& value) {
    value = take<char>() != 0;
    sawOther();
}

void BinaryInput::readChar(char& value) {
    value = take<char>();
    sawOther();
}

void BinaryInput::readSChar(signed char& value) {
    value = take<signed char>();
    sawOther();
}

void BinaryInput::readUChar(unsigned char& value) {
    value = take<unsigned char>();
    sawOther();
}

void BinaryInput::readShort(short& value) {
    value = take<short>();
    sawOther();
}

void BinaryInput::readUShort(unsigned short& value) {
    value = take<unsigned short>();
    sawOther();
}

void BinaryInput::readInt(int& value) {
    value = take<std::int32_t>();
    sawNumber(value);
}

void BinaryInput::readUInt(unsigned int& value) {
    value = take<std::uint32_t>();
    sawNumber(value);
}

void BinaryInput::readLong(long& value) {
    value = take<std::int32_t>();
    sawOther();
}

void BinaryInput::readULong(unsigned long& value) {
    value = take<std::uint32_t>();
    sawOther();
}

void BinaryInput::readFloat(float& value) {
    value = take<float>();
    sawOther();
}

void BinaryInput::readDouble(double& value) {
    value = take<double>();
    sawOther();
}

void BinaryInput::takeText(std::string& value) {
    const auto size = take<std::int32_t>();
    if (size < 0)
        fail("a text of negative length");
    expectElements(static_cast<std::uint64_t>(size));
    if (size > 0) {
        value.resize(static_cast<std::size_t>(size));
        take(value.data(), value.size());
    }
}

void BinaryInput::readString(std::string& value) {
    takeText(value);
    if (leftOutAny() && mayBeObject(value) && skipReferenceToLeftOut())
        value = noObject;
    sawWord(value);
}

void BinaryInput::readStream(std::istream& (*)(std::istream&)) {}

void BinaryInput::readBase(std::ios_base& (*)(std::ios_base&)) {}

void BinaryInput::readGLenum(osgDB::ObjectGLenum& value) {
    value.set(take<std::uint32_t>());
    sawOther();
}

void BinaryInput::readProperty(osgDB::ObjectProperty& property) {
    // Only properties that are one of several names have a number in the file.
    property.set(property._mapProperty ? take<std::int32_t>() : 0);
    sawProperty(property._name, property._value);
}

void BinaryInput::readMark(osgDB::ObjectMark& mark) {
    if (mark._name == "{") {
        sawBegin();
        if (_supportBinaryBrackets)
            beginBlock();
    } else if (mark._name == "}") {
        sawEnd();
        if (!m_blockEnds.empty())
            m_blockEnds.pop_back();
    }
}

/// A block's size counts from where it stands itself.
std::int64_t BinaryInput::takeBlockSize() {
    const bool isLong =
        getInputStream() && getInputStream()->getFileVersion() >= firstVersionOfLongBlocks;
    return isLong ? take<std::int64_t>() : take<std::int32_t>();
}

void BinaryInput::beginBlock() {
    const std::streamoff begin = _in->tellg();
    const std::int64_t size = takeBlockSize();
    const std::int64_t sizeOfSize = static_cast<std::streamoff>(_in->tellg()) - begin;
    const std::uint64_t most = remainingBytes() + static_cast<std::uint64_t>(sizeOfSize);
    if (size < 0 || static_cast<std::uint64_t>(size) > most)
        fail("a block is larger than its file");
    m_blockEnds.push_back(begin + size);
}

/// An object stands whole where it is named first, and as its identity alone from then on. Where
/// the first place is inside an object that was left out, the library would take what comes behind
/// the identity for the object.
/// @return whether such an identity came next; it is behind then.
bool BinaryInput::skipReferenceToLeftOut() {
    const std::streamoff begin = _in->tellg();
    constexpr std::uint64_t longest = sizeof(std::int64_t) + sizeof(std::int32_t);
    if (!_supportBinaryBrackets || remainingBytes() < longest)
        return false;
    const std::int64_t size = takeBlockSize();
    const auto id = take<std::int32_t>();
    const std::int64_t sizeOfIdentity = static_cast<std::streamoff>(_in->tellg()) - begin;
    if (size == sizeOfIdentity && !hasBegun(id))
        return true;
    _in->seekg(begin);
    return false;
}

void BinaryInput::readCharArray(char* bytes, unsigned int size) {
    take(bytes, size);
    sawOther();
}

void BinaryInput::readWrappedString(std::string& value) {
    takeText(value);
    sawText(value);
}

void BinaryInput::advanceToCurrentEndBracket() {
    sawEnd();
    if (m_blockEnds.empty())
        return;
    // Going back would read the same again, for ever.
    const std::streamoff end = m_blockEnds.back();
    m_blockEnds.pop_back();
    if (end < static_cast<std::streamoff>(_in->tellg()))
        fail("a block ends before its content");
    _in->seekg(end);
}

} // namespace orbisk
