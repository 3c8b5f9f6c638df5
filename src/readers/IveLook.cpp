#include "readers/IveLook.h"

#include "readers/ByteReader.h"
#include "readers/IveRecords.h"

#include <osg/Uniform>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace orbisk {

namespace {

constexpr std::uint32_t byteOrderMark = 0x01020304;
constexpr std::uint32_t foreignByteOrderMark = 0x04030201;
constexpr std::uint32_t newestVersion = 45;
constexpr std::uint32_t firstPackedVersion = 33;
constexpr std::uint32_t firstVersionOfSequences = 29;
/// The mark, the version and how the file is packed.
constexpr std::size_t headSize = 3 * sizeof(std::uint32_t);

constexpr std::size_t deepestRecord = 1200;
constexpr std::uint32_t largestFont = 1024; ///< in pixels
constexpr std::uint32_t stippleBytes = 128;
constexpr std::uint32_t fewestHeights = 2; ///< on a side

/// How an image is there.
enum class ImageMode : std::uint8_t { Name, Pixels, File, PackedFile };

std::uint32_t numberAt(std::string_view bytes, std::size_t place, bool foreign) {
    return place + sizeof(std::uint32_t) <= bytes.size()
               ? loadNumber<std::uint32_t>(bytes.data() + place, foreign)
               : 0;
}

bool isForeignFile(std::string_view bytes) {
    return numberAt(bytes, 0, false) == foreignByteOrderMark;
}

class IveLook {
public:
    IveLook(std::string_view bytes, bool (*isImageName)(const std::string& name))
        : m_bytes(bytes), m_foreign(isForeignFile(bytes)), m_isImageName(isImageName) {}

    std::optional<std::string> run() {
        if (number() != byteOrderMark)
            return "the file is of another kind";
        m_version = number();
        if (m_version > newestVersion)
            return "the file is newer than its reader";
        if (m_version >= firstPackedVersion)
            number();
        shared(IveFamily::Node, true);
        return m_fault;
    }

private:
    using Number = std::uint32_t;

    void expect(bool isFine, const char* fault) {
        if (!isFine && !m_fault) {
            m_fault = fault;
            m_place = m_bytes.size();
        }
    }

    std::size_t left() const { return m_bytes.size() - m_place; }

    void skip(std::uint64_t size) {
        expect(size <= left(), "the file ends too early");
        m_place += m_fault ? 0 : static_cast<std::size_t>(size);
    }

    Number number() {
        const Number result = numberAt(m_bytes, m_place, m_foreign);
        skip(sizeof(Number));
        return m_fault ? 0 : result;
    }

    std::uint8_t byte() {
        const std::uint8_t result = left() > 0 ? static_cast<std::uint8_t>(m_bytes[m_place]) : 0;
        skip(1);
        return result;
    }

    /// A count of things of `size` bytes at least, all of which are in the file.
    Number count(std::uint64_t size) {
        // The reader takes the bytes of most lists as one number, and that has a sign.
        constexpr std::uint64_t most = std::numeric_limits<std::int32_t>::max();
        const Number result = number();
        expect(result * std::max<std::uint64_t>(size, 1) <= std::min<std::uint64_t>(left(), most),
               "more is announced than the file has");
        return m_fault ? 0 : result;
    }

    Number plainList(std::uint64_t size) {
        const Number elements = count(size);
        skip(elements * size);
        return elements;
    }

    std::string text() {
        const Number size = count(1);
        std::string result(m_bytes.substr(m_place, size));
        skip(size);
        return result;
    }

    void record(const IveRecord& record) {
        expect(number() == static_cast<Number>(record.tag), "a record is of an unknown kind");
        run(record.fields);
    }

    void oneOf(IveFamily family) {
        const Number tag = numberAt(m_bytes, m_place, m_foreign);
        const IveRecord* found = iveRecord(family, static_cast<std::int32_t>(tag));
        expect(found != nullptr, "a record is of an unknown kind");
        expect(m_depth < deepestRecord, "records are nested too deeply");
        if (m_fault || !found)
            return;
        ++m_depth;
        record(*found);
        --m_depth;
    }

    void shared(IveFamily family, bool isNeeded) {
        const Number name = number();
        if (!isNeeded && static_cast<std::int32_t>(name) < 0)
            return;
        std::set<Number>& known = m_known[family];
        if (known.count(name) != 0)
            return;
        oneOf(family);
        // Not before: a record that has itself inside is another one there.
        known.insert(name);
    }

    void run(const std::vector<IveField>& fields) {
        for (const IveField& field : fields)
            if (!m_fault)
                run(field);
    }

    void run(const IveField& field) {
        switch (field.step) {
        case IveStep::Bytes:
            return skip(field.size);
        case IveStep::Below:
            return expect(byte() < field.size, "a number has no meaning");
        case IveStep::Text:
            return skip(count(1));
        case IveStep::Record:
            return record(*field.record);
        case IveStep::OneOf:
            return oneOf(field.family);
        case IveStep::Shared:
            return shared(field.family, true);
        case IveStep::SharedOrNone:
            return shared(field.family, false);
        case IveStep::Special:
            return special(field.special);
        default:
            return block(field);
        }
    }

    void block(const IveField& field) {
        switch (field.step) {
        case IveStep::List:
            return list(field.inside);
        case IveStep::Times:
            return repeat(field.inside, m_lastCount);
        case IveStep::Flag:
            return repeat(field.inside, byte() != 0 ? 1 : 0);
        case IveStep::LongFlag:
            return repeat(field.inside, number() != 0 ? 1 : 0);
        case IveStep::Else:
            return repeat(field.inside, m_lastCount == 0 ? 1 : 0);
        case IveStep::From:
        case IveStep::Until:
            if ((m_version >= field.size) == (field.step == IveStep::From))
                run(field.inside);
            return;
        default:
            return expect(false, "a record is of an unknown kind");
        }
    }

    void list(const std::vector<IveField>& inside) {
        const bool isPlain = inside.size() == 1 && inside.front().step == IveStep::Bytes;
        if (isPlain)
            m_lastCount = plainList(inside.front().size);
        else
            repeat(inside, count(1));
    }

    void repeat(const std::vector<IveField>& inside, Number times) {
        for (Number i = 0; i < times && !m_fault; ++i)
            run(inside);
        m_lastCount = times;
    }

    void special(IveSpecial which);
    void userData();
    void shapeAttributes();
    void array(bool isIndices);
    void positions();
    void switchSets();
    void links();
    void fontSize();
    void heightArea(bool isPacked);
    void packedHeights(Number heights);
    void image();
    void imageOf(ImageMode mode);
    void imageFile();
    void cubeImages();
    void oldUniform();
    void uniformArray();

    ImageMode imageMode() {
        const std::uint8_t mode = byte();
        expect(mode <= static_cast<std::uint8_t>(ImageMode::PackedFile), "a number has no meaning");
        return static_cast<ImageMode>(mode);
    }

    std::string_view m_bytes;
    std::size_t m_place = 0;
    bool m_foreign;
    Number m_version = 0;
    bool (*m_isImageName)(const std::string& name);
    std::size_t m_depth = 0;
    Number m_lastCount = 0; ///< of the list that ended last, or 1 where a flag was set
    std::map<IveFamily, std::set<Number>> m_known;
    std::optional<std::string> m_fault;
};

void IveLook::special(IveSpecial which) {
    switch (which) {
    case IveSpecial::Unknown:
        return expect(false, "a record is of an unknown kind");
    case IveSpecial::Count:
        m_lastCount = count(1);
        return;
    case IveSpecial::UserData:
        return userData();
    case IveSpecial::Array:
        return array(false);
    case IveSpecial::Indices:
        return array(true);
    case IveSpecial::Letters:
        return expect(plainList(sizeof(Number)) > 0, "a label has no text");
    case IveSpecial::SmallLetters:
        return expect(plainList(1) > 0, "a label has no text");
    case IveSpecial::Stipple:
        return expect(plainList(1) >= stippleBytes, "a pattern is too small");
    case IveSpecial::Positions:
        return positions();
    case IveSpecial::SwitchSets:
        return switchSets();
    case IveSpecial::Links:
        return links();
    case IveSpecial::FontSize:
        return fontSize();
    case IveSpecial::HeightArea:
        return heightArea(false);
    case IveSpecial::PackedHeightArea:
        return heightArea(true);
    case IveSpecial::Image:
        return image();
    case IveSpecial::ImageByMode:
        return imageOf(imageMode());
    case IveSpecial::CubeImages:
        return cubeImages();
    case IveSpecial::OldUniform:
        return oldUniform();
    case IveSpecial::UniformArray:
        return uniformArray();
    }
}

void IveLook::userData() {
    constexpr std::pair<Number, IveFamily> kinds[] = {{0x2, IveFamily::Node},
                                                      {0x5, IveFamily::StateSet},
                                                      {0x100, IveFamily::Attribute},
                                                      {0x1000, IveFamily::Drawable}};
    constexpr Number attributeList = 0x10000b;
    const Number kind = number();
    for (const auto& [known, family] : kinds)
        if (known == kind)
            shared(family, true);
    if (kind == attributeList) {
        expect(number() == attributeList, "a record is of an unknown kind");
        shapeAttributes();
    }
}

void IveLook::shapeAttributes() {
    enum Kind : Number { None, Whole, Double, Text };
    constexpr std::uint64_t smallest = 2 * sizeof(Number);
    const Number attributes = count(smallest);
    for (Number i = 0; i < attributes && !m_fault; ++i) {
        text();
        const Number kind = number();
        if (kind == Whole)
            skip(sizeof(std::int32_t));
        else if (kind == Double)
            skip(sizeof(double));
        else if (kind == Text && byte() != 0)
            text();
    }
}

void IveLook::array(bool isIndices) {
    /// Bytes of an element for each kind of array; the first of them hold whole numbers.
    constexpr std::uint8_t sizes[] = {4, 1, 2, 4, 4, 4, 8, 12, 16, 4, 6, 8, 2, 3, 4, 16, 24, 32};
    constexpr std::uint8_t kindsOfIndices = 4;
    const std::uint8_t kind = byte();
    const bool isKnown = kind < (isIndices ? kindsOfIndices : std::size(sizes));
    expect(isKnown, "an array is of an unknown kind");
    if (isKnown)
        m_lastCount = plainList(sizes[kind]);
}

void IveLook::positions() {
    constexpr std::uint64_t positionBytes = 12;
    const Number drawables = m_lastCount;
    expect(plainList(positionBytes) <= drawables, "a billboard has more positions than drawables");
}

void IveLook::switchSets() {
    const Number children = m_lastCount;
    const Number sets = count(children);
    skip(std::uint64_t(sets) * children);
}

void IveLook::links() {
    const Number names = count(sizeof(Number));
    for (Number i = 0; i < names && !m_fault; ++i)
        text();
    const Number children = count(sizeof(Number));
    expect(children <= names, "a link has more children than names");
    for (Number i = 0; i < children && !m_fault; ++i)
        shared(IveFamily::Node, true);
}

void IveLook::fontSize() {
    const Number width = number();
    const Number height = number();
    expect(width <= largestFont && height <= largestFont, "a label is of absurd detail");
}

void IveLook::heightArea(bool isPacked) {
    constexpr std::uint64_t plainBytes = 44;
    const std::uint64_t columns = number();
    const std::uint64_t rows = number();
    skip(plainBytes);
    const Number heights = isPacked ? number() : plainList(sizeof(float));
    expect(columns >= fewestHeights && rows >= fewestHeights && columns * rows == heights,
           "a height field has another number of heights than it says");
    if (isPacked)
        packedHeights(heights);
}

void IveLook::packedHeights(Number heights) {
    // Where all are the same, a few bytes stand for a field of any size.
    constexpr Number mostOfOneHeight = 1u << 22;
    constexpr std::uint64_t range = 2 * sizeof(float);
    if (byte() != 0) {
        expect(heights <= mostOfOneHeight, "a height field is of absurd size");
        return skip(sizeof(float));
    }
    const Number size = number();
    if (size == 1 || size == 2)
        return skip(range + std::uint64_t(heights) * size);
    skip(std::uint64_t(heights) * sizeof(float));
}

void IveLook::image() {
    if (m_version >= firstVersionOfSequences) {
        const IveRecord& sequence = iveRecord("ImageSequence");
        if (numberAt(m_bytes, m_place, m_foreign) == static_cast<Number>(sequence.tag))
            return record(sequence);
        number();
    }
    imageOf(imageMode());
}

void IveLook::imageOf(ImageMode mode) {
    switch (mode) {
    case ImageMode::Name:
        text();
        return;
    case ImageMode::Pixels:
        if (byte() != 0)
            record(iveRecord("Image"));
        return;
    case ImageMode::File:
    case ImageMode::PackedFile:
        return imageFile();
    }
}

void IveLook::imageFile() {
    const std::string name = text();
    const auto size = static_cast<std::int32_t>(number());
    if (m_fault || name.empty() || size <= 0)
        return;
    expect(m_isImageName(name), "an image in the file is none");
    skip(static_cast<std::uint64_t>(size));
}

void IveLook::cubeImages() {
    constexpr int sides = 6;
    if (m_version >= firstVersionOfSequences) {
        for (int side = 0; side < sides; ++side)
            image();
        return;
    }
    const ImageMode mode = imageMode();
    for (int side = 0; side < sides; ++side)
        imageOf(mode);
}

void IveLook::oldUniform() {
    constexpr Number firstNamedObjects = 12;
    const auto kind = osg::Uniform::getGlApiType(static_cast<osg::Uniform::Type>(number()));
    if (m_version < firstNamedObjects)
        text();
    switch (kind) {
    case osg::Uniform::FLOAT:
    case osg::Uniform::FLOAT_VEC2:
    case osg::Uniform::FLOAT_VEC3:
    case osg::Uniform::FLOAT_VEC4:
    case osg::Uniform::INT:
    case osg::Uniform::INT_VEC2:
    case osg::Uniform::INT_VEC3:
    case osg::Uniform::INT_VEC4:
    case osg::Uniform::FLOAT_MAT3:
    case osg::Uniform::FLOAT_MAT4:
        return skip(sizeof(float) *
                    static_cast<std::uint64_t>(osg::Uniform::getTypeNumComponents(kind)));
    case osg::Uniform::FLOAT_MAT2:
        // The reader puts nine numbers into a place for four.
        return expect(false, "a uniform is of an unknown kind");
    default:
        return;
    }
}

void IveLook::uniformArray() {
    number();
    const Number elements = count(1);
    array(false);
    expect(elements <= std::max<Number>(m_lastCount, 1), "a uniform has too few numbers");
}

} // namespace

bool isPackedIve(std::string_view bytes) {
    const bool foreign = isForeignFile(bytes);
    constexpr std::size_t versionPlace = sizeof(std::uint32_t);
    constexpr std::size_t packingPlace = 2 * sizeof(std::uint32_t);
    return bytes.size() >= headSize && numberAt(bytes, 0, foreign) == byteOrderMark &&
           numberAt(bytes, versionPlace, foreign) >= firstPackedVersion &&
           static_cast<std::int32_t>(numberAt(bytes, packingPlace, foreign)) > 0;
}

std::optional<std::string> unpackedIve(std::string_view bytes) {
    constexpr std::size_t mostTimesThePacked = 100;
    constexpr std::size_t alwaysAllowed = std::size_t(1) << 28;
    constexpr std::size_t pieceSize = 1 << 16;
    constexpr int anyForm = MAX_WBITS + 32;
    // Behind the head there is the size of the largest piece that was packed.
    const std::string_view packed =
        bytes.substr(std::min(headSize + sizeof(std::uint32_t), bytes.size()));
    std::string result(bytes.substr(0, 2 * sizeof(std::uint32_t)));
    result.append(sizeof(std::uint32_t), '\0');
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(std::min<std::size_t>(packed.size(), UINT32_MAX));
    if (inflateInit2(&stream, anyForm) != Z_OK)
        return std::nullopt;
    std::vector<char> piece(pieceSize);
    int state = Z_OK;
    const std::size_t most = std::max(mostTimesThePacked * bytes.size(), alwaysAllowed);
    while (state == Z_OK && result.size() <= most) {
        stream.next_out = reinterpret_cast<Bytef*>(piece.data());
        stream.avail_out = pieceSize;
        state = inflate(&stream, Z_NO_FLUSH);
        result.append(piece.data(), pieceSize - stream.avail_out);
    }
    inflateEnd(&stream);
    return state == Z_STREAM_END ? std::optional<std::string>(std::move(result)) : std::nullopt;
}

std::optional<std::string> iveRefusal(std::string_view bytes,
                                      bool (*isImageName)(const std::string& name)) {
    return IveLook(bytes, isImageName).run();
}

} // namespace orbisk
