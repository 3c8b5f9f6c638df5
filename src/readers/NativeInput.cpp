#include "readers/NativeInput.h"

#include "readers/NativeClasses.h"

#include <osg/Image>
#include <osg/Notify>
#include <osgDB/DataTypes>
#include <osgDB/FileNameUtils>
#include <osgDB/ObjectWrapper>
#include <osgDB/Registry>

#include <algorithm>
#include <istream>
#include <set>

namespace orbisk {

namespace {

/// Below this a wrong count does no harm, and asking how much is left would only take time.
constexpr std::int64_t countsWorthChecking = 4096;

/// Where the numbers of an image stand in their order.
enum ImageNumber : std::size_t {
    Decision = 1,
    Width = 3,
    Height = 4,
    Depth = 5,
    PixelFormat = 7,
    DataType = 8,
    Packing = 9,
    DataSize = 11, ///< in text the number of levels
    LevelCount = 12,
    FirstLevel = 13
};

/// The third number of a binary file has a bit for each thing that is not as usual.
constexpr std::size_t headNumbers = 3;
constexpr std::int64_t hasOrderOfItsOwn = 2;

const std::set<std::string> pictureExtensions = {"bmp", "dds",  "gif", "hdr", "jpe", "jpeg",
                                                 "jpg", "pbm",  "pgm", "png", "pnm", "ppm",
                                                 "rgb", "rgba", "sgi", "tga", "tif", "tiff"};

constexpr std::int64_t longestSide = 1 << 16;
constexpr std::uint64_t bitsPerByte = 8;

bool isPacking(std::int64_t packing) {
    return packing == 1 || packing == 2 || packing == 4 || packing == 8;
}

} // namespace

NativeInput::NativeInput(std::istream& stream) {
    setStream(&stream);
}

NativeInput::~NativeInput() = default;

void NativeInput::fail(const char* what) {
    throw DamagedFile(what);
}

std::uint64_t NativeInput::remainingBytes() const {
    const std::streampos here = _in->tellg();
    _in->seekg(0, std::ios::end);
    const std::streampos end = _in->tellg();
    _in->seekg(here);
    return here < 0 || end < here ? 0 : static_cast<std::uint64_t>(end - here);
}

void NativeInput::expectElements(std::uint64_t count) const {
    if (count > static_cast<std::uint64_t>(countsWorthChecking) && count > remainingBytes())
        fail("more elements are announced than the file has bytes");
}

void NativeInput::sawNumber(std::int64_t number) {
    m_last = Word::Number;
    m_number = number;
    // It is kept for all files that come after this one.
    if (isBinary() && m_headNumbers < headNumbers && ++m_headNumbers == headNumbers &&
        (number & hasOrderOfItsOwn) != 0)
        fail("the file orders properties in a way of its own");
    if (number == 0 && m_property == "KeyFrameContainer")
        fail("a channel has no keys");
    m_property.clear();
    if (m_isIdentityNext)
        sawIdentity(number);
    else if (m_image.isOpen)
        takeImageNumber(number);
}

void NativeInput::sawText(const std::string& text) {
    m_isElement = m_last == Word::Number || (m_last == Word::Begin && m_beganList) ||
                  (m_last == Word::End && !m_open.empty() && m_open.back().endedPrimitives);
    m_last = Word::Text;
    m_text = text;
    if (m_isElement && text == noObject)
        checkElement(Kind::Other);
    constexpr std::uint64_t encodedLetters = 4;
    constexpr std::uint64_t decodedBytes = 3;
    if (m_image.isOpen && m_image.numbers.size() > DataSize)
        m_image.dataBytes += text.size() / encodedLetters * decodedBytes;
}

void NativeInput::sawWord(std::string& word) {
    if (word.compare(0, 3, "osg") == 0 && word.find("::") != std::string::npos) {
        const std::string className = readClassFor(word);
        if (className != word) {
            OSG_WARN << word << " is not shown." << std::endl;
            // Without brackets nobody knows where it ends.
            if (isBinary() && !_supportBinaryBrackets)
                fail("a class that is not shown");
            word = className;
            m_leftOutAny = true;
        }
    }
    sawText(word);
}

void NativeInput::sawProperty(const std::string& name, int value) {
    m_property = name;
    m_isModeNext = name == "PrimitiveType" && !m_isModeNext;
    if (m_isModeNext && (value < osgDB::ID_DRAWARRAYS || value > osgDB::ID_DRAWELEMENTS_UINT))
        fail("a geometry has something else among its primitives");
    if (name == "UniqueID") {
        m_isIdentityNext = true;
        m_isObject = m_last == Word::Begin;
    } else if (name == "WriteHint") {
        m_image = {};
        m_image.isOpen = true;
    }
    m_last = Word::Other;
}

void NativeInput::sawBegin() {
    m_beganList = m_last == Word::Number;
    if (m_beganList)
        expectElements(m_number < 0 ? UINT64_MAX : static_cast<std::uint64_t>(m_number));
    // An object and the list it stands in are a level each.
    if (++m_depth > 2 * deepestObject)
        fail("objects are nested too deeply");
    m_last = Word::Begin;
}

void NativeInput::sawEnd() {
    m_last = Word::End;
    if (m_depth > 0)
        --m_depth;
    bool endedPrimitives = false;
    while (!m_open.empty() && m_open.back().depth > m_depth) {
        endedPrimitives = m_open.back().isElement && m_open.back().kind == Kind::Primitives;
        m_open.pop_back();
    }
    if (!m_open.empty())
        m_open.back().endedPrimitives = endedPrimitives;
    // Only in text the data of an image have an end of their own.
    if (m_image.isOpen && m_image.numbers.size() > DataSize)
        checkImageText();
    m_image.isOpen = false;
}

void NativeInput::sawIdentity(std::int64_t id) {
    m_isIdentityNext = false;
    m_last = Word::Other;
    if (!m_isObject) {
        // The library takes whatever has this identity for an image, without a look at it.
        if (m_objects.count(id) != 0)
            fail("an image refers to another kind of object");
        return;
    }
    const auto known = m_objects.find(id);
    const Kind kind = known == m_objects.end() ? kindOf(m_text) : known->second;
    checkNesting(id);
    if (m_isElement)
        checkElement(kind);
    m_objects.emplace(id, kind);
    m_open.push_back({m_depth, id, kind, m_isElement});
}

void NativeInput::checkNesting(std::int64_t id) const {
    for (const OpenObject& object : m_open)
        if (object.id == id && (object.kind == Kind::Node || object.kind == Kind::Geometry))
            fail("a node is inside itself");
}

void NativeInput::checkElement(Kind kind) {
    if (m_open.empty() || m_open.back().kind != Kind::Geometry)
        return;
    // The primitive sets are the first list of a geometry; the library breaks on what is none.
    OpenObject& geometry = m_open.back();
    const bool isAmongPrimitives = !geometry.hasPrimitives || geometry.endedPrimitives;
    if (isAmongPrimitives && kind != Kind::Primitives)
        fail("a geometry has something else among its primitives");
    geometry.hasPrimitives = true;
}

NativeInput::Kind NativeInput::kindOf(const std::string& className) {
    osgDB::ObjectWrapper* wrapper =
        osgDB::Registry::instance()->getObjectWrapperManager()->findWrapper(className);
    if (!wrapper)
        return Kind::Other;
    Kind kind = Kind::Other;
    for (const auto& base : wrapper->getAssociates()) {
        if (base._name == "osg::Geometry")
            return Kind::Geometry;
        if (base._name == "osg::Node")
            kind = Kind::Node;
        else if (base._name == "osg::Array")
            kind = Kind::Array;
        else if (base._name == "osg::PrimitiveSet")
            kind = Kind::Primitives;
    }
    return kind;
}

void NativeInput::checkPackedImage() const {
    // The library unpacks it past the door that files come through.
    if (pictureExtensions.count(osgDB::getLowerCaseFileExtension(m_text)) == 0)
        fail("a picture of no known format");
}

void NativeInput::takeImageNumber(std::int64_t number) {
    std::vector<std::int64_t>& numbers = m_image.numbers;
    numbers.push_back(number);
    const std::size_t place = numbers.size() - 1;
    if (place == Decision && number == osgDB::IMAGE_INLINE_FILE)
        checkPackedImage();
    if (place == Decision && number != osgDB::IMAGE_INLINE_DATA)
        m_image.isOpen = false;
    if (place == DataSize) {
        if (number < 0 || !isPacking(numbers[Packing]))
            fail("an image of no sensible size");
        if (isBinary() && number != 0 && levelBytes(0) > static_cast<std::uint64_t>(number))
            fail("an image is larger than its data");
        expectElements(static_cast<std::uint64_t>(number));
    }
    if (!isBinary())
        return;
    if (place >= FirstLevel) {
        const std::uint64_t end =
            static_cast<std::uint64_t>(number) + levelBytes(place - LevelCount);
        if (number < 0 || end > static_cast<std::uint64_t>(numbers[DataSize]))
            fail("an image is larger than its data");
    }
    if (place == LevelCount)
        expectElements(static_cast<std::uint64_t>(number));
    if (place >= LevelCount && place - LevelCount == static_cast<std::size_t>(numbers[LevelCount]))
        m_image.isOpen = false;
}

void NativeInput::checkImageText() const {
    std::uint64_t wanted = 0;
    for (std::int64_t level = 0; level < m_image.numbers[DataSize]; ++level) {
        wanted += levelBytes(static_cast<std::size_t>(level));
        if (wanted > m_image.dataBytes)
            fail("an image is larger than its data");
    }
}

std::uint64_t NativeInput::levelBytes(std::size_t level) const {
    const std::vector<std::int64_t>& numbers = m_image.numbers;
    std::int64_t sides[] = {numbers[Width], numbers[Height], numbers[Depth]};
    for (std::int64_t& side : sides) {
        if (side <= 0)
            return 0;
        if (side > longestSide || level >= static_cast<std::size_t>(longestSide))
            return UINT64_MAX / 2;
        const std::int64_t divided = level < 32 ? side >> level : 0;
        side = std::max<std::int64_t>(divided, 1);
    }
    const auto format = static_cast<GLenum>(numbers[PixelFormat]);
    const auto type = static_cast<GLenum>(numbers[DataType]);
    const std::uint64_t pixels = static_cast<std::uint64_t>(sides[0] * sides[1] * sides[2]);
    // The library computes in 32 bits; what does not fit there is too large in any case.
    if (pixels * osg::Image::computePixelSizeInBits(format, type) / bitsPerByte > UINT32_MAX / 2)
        return UINT64_MAX / 2;
    return osg::Image::computeImageSizeInBytes(
        static_cast<int>(sides[0]), static_cast<int>(sides[1]), static_cast<int>(sides[2]), format,
        type, static_cast<int>(numbers[Packing]));
}

} // namespace orbisk
