#include "readers/ObjFile.h"

#include "readers/TextLines.h"
#include "readers/TextWords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>
#include <unordered_map>

namespace orbisk {

namespace {

constexpr std::size_t mostNumbers = 7; ///< of a position: x, y, z and a colour with its opacity
constexpr std::size_t mostMaterialFiles = 1000; ///< each is looked for in several folders
constexpr double whole = 255.0;                 ///< a colour component of two hexadecimal digits

bool isFinite(double value) {
    return std::isfinite(static_cast<float>(value));
}

float finiteOr(double value, float other) {
    return isFinite(value) ? static_cast<float>(value) : other;
}

/// Reads numbers up to the first word that is none; gives how many there were.
template <std::size_t N>
std::size_t takeNumbers(std::string_view text, std::array<double, N>& to) {
    std::size_t count = 0;
    while (count < N && takeNumber(text, to[count]))
        ++count;
    return count;
}

/// Whether `text` begins with `word` and a blank; takes both off then.
bool takeKeyword(std::string_view& text, std::string_view word) {
    if (text.size() <= word.size() || !isBlank(text[word.size()]) ||
        text.substr(0, word.size()) != word)
        return false;
    text.remove_prefix(word.size() + 1);
    return true;
}

/// The names of a file, each kept once however often it comes.
class Names {
public:
    Names() { numberOf({}); }

    std::uint32_t numberOf(std::string_view text) {
        std::string name(text);
        std::replace(name.begin(), name.end(), '\t', ' ');
        return m_numbers.emplace(std::move(name), static_cast<std::uint32_t>(m_numbers.size()))
            .first->second;
    }

    std::vector<std::string> inOrder() && {
        std::vector<std::string> names(m_numbers.size());
        for (const auto& [name, number] : m_numbers)
            names[number] = name;
        return names;
    }

private:
    std::unordered_map<std::string, std::uint32_t> m_numbers;
};

/// Reads the lines of a file one by one.
class ObjParser {
public:
    /// @return whether the file can still be held.
    bool read(std::string_view line);

    ObjFile finish() &&;

private:
    void readPosition(std::string_view text);
    void readNormal(std::string_view text);
    void readTexture(std::string_view text);
    bool readElement(std::string_view text, ObjElement::Kind kind);
    bool readState(std::string_view line);
    void readColourRow(std::string_view text);
    void readSmoothing(std::string_view text);
    void addMaterialFile(std::string_view name);

    void takeCorner(std::string_view word);
    bool beginGroup(bool hasTextures, bool hasNormals);
    void checkPositions();

    std::int32_t positionOf(int index) const;
    template <class Value>
    static std::int32_t knownSoFar(int index, const std::vector<Value>& values);

    using GroupKey = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, bool, bool, int>;

    ObjFile m_file;
    ObjGroup m_state;
    std::optional<std::uint32_t> m_group; ///< of the state; none when it may be another one
    Names m_names;
    std::map<GroupKey, std::uint32_t> m_groups;
};

bool ObjParser::read(std::string_view line) {
    if (line.empty())
        return true;
    std::string_view rest = line;
    if (takeKeyword(rest, "v"))
        readPosition(rest);
    else if (takeKeyword(rest, "f"))
        return readElement(rest, ObjElement::Kind::Face);
    else if (takeKeyword(rest, "vt"))
        readTexture(rest);
    else if (takeKeyword(rest, "vn"))
        readNormal(rest);
    else if (takeKeyword(rest, "l"))
        return readElement(rest, ObjElement::Kind::Line);
    else if (takeKeyword(rest, "p"))
        return readElement(rest, ObjElement::Kind::Points);
    else if (takeKeyword(rest, "#MRGB"))
        readColourRow(rest);
    else if (line.front() != '#' && line.front() != '$' && !readState(line))
        ++m_file.unreadLines;
    return m_file.positions.size() <= std::numeric_limits<std::int32_t>::max();
}

/// x y z, or x y z w, or x y z and a colour.
void ObjParser::readPosition(std::string_view text) {
    enum : std::size_t { plain = 3, withWeight = 4, withColour = 6 };
    std::array<double, mostNumbers> n{};
    const std::size_t count = takeNumbers(text, n);
    osg::Vec3d position(n[0], n[1], n[2]);
    if (count == withWeight) {
        const auto divided = [&](double value) {
            return static_cast<double>(static_cast<float>(value) / static_cast<float>(n[plain]));
        };
        position.set(divided(n[0]), divided(n[1]), divided(n[2]));
    }
    if (count == 0)
        position.x() = std::numeric_limits<double>::quiet_NaN();
    if (count >= withColour) {
        m_file.colours.resize(std::max(m_file.colours.size(), m_file.positions.size()),
                              osg::Vec4(1, 1, 1, 1));
        m_file.colours.emplace_back(finiteOr(n[3], 1), finiteOr(n[4], 1), finiteOr(n[5], 1),
                                    count == mostNumbers ? finiteOr(n[6], 1) : 1);
    }
    m_file.positions.push_back(position);
}

void ObjParser::readNormal(std::string_view text) {
    std::array<double, 3> n{};
    if (takeNumbers(text, n) > 0)
        m_file.normals.emplace_back(finiteOr(n[0], 0), finiteOr(n[1], 0), finiteOr(n[2], 0));
}

void ObjParser::readTexture(std::string_view text) {
    std::array<double, 2> n{};
    if (takeNumbers(text, n) > 0)
        m_file.textures.emplace_back(finiteOr(n[0], 0), finiteOr(n[1], 0));
}

/// Colours of the positions in the order of the file, as one modeller writes them in comments:
/// eight hexadecimal digits each, a mask, red, green and blue.
void ObjParser::readColourRow(std::string_view text) {
    constexpr std::size_t digitsOfComponent = 2;
    constexpr std::size_t digitsOfColour = 8;
    constexpr int base = 16;
    const auto component = [&](std::size_t index) {
        const char* const begin = text.data() + index * digitsOfComponent;
        int value = 0;
        std::from_chars(begin, begin + digitsOfComponent, value, base);
        return static_cast<float>(value / whole);
    };
    for (; text.size() >= digitsOfColour; text.remove_prefix(digitsOfColour))
        m_file.colours.emplace_back(component(1), component(2), component(3), 1.0f);
}

/// Counted from 1, or from the last position so far with -1; a position may also come later.
std::int32_t ObjParser::positionOf(int index) const {
    if (index >= 0)
        return index - 1;
    const auto count = static_cast<std::int64_t>(m_file.positions.size());
    return static_cast<std::int32_t>(std::max<std::int64_t>(count + index, ObjCorner::none));
}

template <class Value>
std::int32_t ObjParser::knownSoFar(int index, const std::vector<Value>& values) {
    const auto count = static_cast<std::int64_t>(values.size());
    const std::int64_t known = index < 0 ? count + index : std::int64_t{index} - 1;
    return known >= 0 && known < count ? static_cast<std::int32_t>(known) : ObjCorner::none;
}

/// position, position/texture, position//normal or position/texture/normal
void ObjParser::takeCorner(std::string_view word) {
    const auto takeSlash = [&] {
        const bool is = word.size() > 1 && word.front() == '/';
        word.remove_prefix(is ? 1 : 0);
        return is;
    };
    int index = 0;
    if (!takeInteger(word, index))
        return;
    ObjCorner corner;
    corner.position = positionOf(index);
    if (takeSlash()) {
        if (takeInteger(word, index))
            corner.texture = knownSoFar(index, m_file.textures);
        if (takeSlash() && takeInteger(word, index))
            corner.normal = knownSoFar(index, m_file.normals);
    }
    m_file.corners.push_back(corner);
}

bool ObjParser::readElement(std::string_view text, ObjElement::Kind kind) {
    ObjElement element;
    element.kind = kind;
    const std::size_t first = m_file.corners.size();
    for (std::string_view word = takeWord(text); !word.empty(); word = takeWord(text))
        takeCorner(word);
    const std::size_t count = m_file.corners.size() - first;
    if (m_file.corners.size() > std::numeric_limits<std::uint32_t>::max())
        return false;
    if (count == 0)
        return true;
    bool hasTextures = true;
    bool hasNormals = true;
    for (std::size_t i = first; i < m_file.corners.size(); ++i) {
        hasTextures = hasTextures && m_file.corners[i].texture != ObjCorner::none;
        hasNormals = hasNormals && m_file.corners[i].normal != ObjCorner::none;
    }
    if (!beginGroup(hasTextures, hasNormals))
        return false;
    element.firstCorner = static_cast<std::uint32_t>(first);
    element.cornerCount = static_cast<std::uint32_t>(count);
    element.group = *m_group;
    m_file.elements.push_back(element);
    return true;
}

bool ObjParser::beginGroup(bool hasTextures, bool hasNormals) {
    if (m_group && m_state.hasTextures == hasTextures && m_state.hasNormals == hasNormals)
        return true;
    m_state.hasTextures = hasTextures;
    m_state.hasNormals = hasNormals;
    const GroupKey key(m_state.material, m_state.object, m_state.name, hasTextures, hasNormals,
                       m_state.smoothing);
    const auto [found, isNew] =
        m_groups.emplace(key, static_cast<std::uint32_t>(m_file.groups.size()));
    if (isNew)
        m_file.groups.push_back(m_state);
    m_group = found->second;
    return m_file.groups.size() <= mostObjGroups;
}

bool ObjParser::readState(std::string_view line) {
    std::string_view rest = line;
    const auto takesName = [&](std::string_view word) {
        return takeKeyword(rest, word) || (line == word && (rest = {}, true));
    };
    if (takeKeyword(rest, "usemtl"))
        m_state.material = m_names.numberOf(rest);
    else if (takesName("o"))
        m_state.object = m_names.numberOf(rest);
    else if (takesName("g"))
        m_state.name = m_names.numberOf(rest);
    else if (takeKeyword(rest, "s"))
        readSmoothing(rest);
    else if (takeKeyword(rest, "mtllib"))
        addMaterialFile(trimmed(rest));
    else
        return false;
    m_group.reset();
    return true;
}

void ObjParser::readSmoothing(std::string_view text) {
    int smoothing = 0;
    takeInteger(text, smoothing);
    m_state.smoothing = smoothing;
}

void ObjParser::addMaterialFile(std::string_view name) {
    auto& files = m_file.materialFiles;
    if (files.size() < mostMaterialFiles &&
        std::find(files.begin(), files.end(), name) == files.end())
        files.emplace_back(name);
}

/// Faces may come before their corners, so that this waits for the end of the file.
void ObjParser::checkPositions() {
    std::vector<bool> isUsable(m_file.positions.size());
    for (std::size_t i = 0; i < isUsable.size(); ++i) {
        const osg::Vec3d& position = m_file.positions[i];
        isUsable[i] = isFinite(position.x()) && isFinite(position.y()) && isFinite(position.z());
    }
    for (ObjCorner& corner : m_file.corners)
        if (corner.position < 0 || static_cast<std::size_t>(corner.position) >= isUsable.size() ||
            !isUsable[static_cast<std::size_t>(corner.position)])
            corner.position = ObjCorner::none;
}

ObjFile ObjParser::finish() && {
    checkPositions();
    m_file.names = std::move(m_names).inOrder();
    return std::move(m_file);
}

} // namespace

std::optional<ObjFile> readObj(std::string_view text) {
    ObjParser parser;
    for (TextLines lines(text); lines.next();)
        if (!parser.read(lines.line()))
            return std::nullopt;
    return std::move(parser).finish();
}

} // namespace orbisk
