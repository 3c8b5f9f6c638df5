#include "readers/InventorLook.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace orbisk {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t deepestBlock = 1000;
constexpr std::size_t deepestInclusion = 8;

/// What indices count.
enum Indexed { Points, Normals, Colors, Places, IndexedKinds };

constexpr long unknown = -1;
constexpr std::int64_t mostPoints = std::int64_t(1) << 31;

/// How many there are of each, as far as that is known.
using Counts = std::array<long, IndexedKinds>;

constexpr Counts nothingKnown = {unknown, unknown, unknown, unknown};

/// A node that holds what indices count, the field it has them in, and the numbers each one takes.
struct Source {
    const char* node;
    const char* field;
    Indexed kind;
    long numbers;
};

constexpr Source sources[] = {{"Coordinate", "point", Points, 3},
                              {"Coordinate3", "point", Points, 3},
                              {"Coordinate4", "point", Points, 4},
                              {"Normal", "vector", Normals, 3},
                              {"Color", "color", Colors, 3},
                              {"TextureCoordinate", "point", Places, 2},
                              {"VertexProperty", "vertex", Points, 3},
                              {"TextureCoordinate2", "point", Places, 2},
                              {"TextureCoordinate3", "point", Places, 3}};

struct IndexField {
    const char* field;
    Indexed kind;
};

constexpr IndexField indexFields[] = {{"coordIndex", Points},
                                      {"normalIndex", Normals},
                                      {"colorIndex", Colors},
                                      {"texCoordIndex", Places},
                                      {"textureCoordIndex", Places}};

/// Fields that tell how many points are used one after the other, from "startIndex" on.
const std::set<std::string> countFields = {"numPoints", "numVertices"};

/// Fields that tell how many points a row has, and how many rows there are.
const std::set<std::string> sideFields = {"verticesPerRow", "verticesPerColumn"};

/// Nodes after which what they brought stays in force: the other nodes keep it to themselves.
const std::set<std::string> openGroups = {"Group", "Switch"};

const std::set<std::string> inclusions = {"Inline", "WWWInline", "File"};

const Source* sourceOf(const std::string& node) {
    const auto* found = std::find_if(std::begin(sources), std::end(sources),
                                     [&](const Source& source) { return node == source.node; });
    return found == std::end(sources) ? nullptr : found;
}

const IndexField* indexFieldOf(const std::string& field) {
    const auto* found = std::find_if(std::begin(indexFields), std::end(indexFields),
                                     [&](const IndexField& index) { return field == index.field; });
    return found == std::end(indexFields) ? nullptr : found;
}

/// The words of a file: names, numbers, texts in quotes (with the first quote), brackets.
class Words {
public:
    explicit Words(const std::string& text) : m_text(text) {}

    bool next(std::string& word) {
        skip();
        if (m_place >= m_text.size())
            return false;
        const std::size_t begin = m_place;
        if (m_text[begin] == '"') {
            while (++m_place < m_text.size() && m_text[m_place] != '"')
                m_place += m_text[m_place] == '\\' ? 1 : 0;
            m_place = std::min(m_place, m_text.size());
            word = m_text.substr(begin, m_place - begin);
            ++m_place;
            return true;
        }
        ++m_place;
        if (!isBracket(m_text[begin]))
            while (m_place < m_text.size() && !isSpace(m_text[m_place]) &&
                   !isBracket(m_text[m_place]) && m_text[m_place] != '"')
                ++m_place;
        word.assign(m_text, begin, m_place - begin);
        return true;
    }

private:
    static bool isSpace(char c) { return static_cast<unsigned char>(c) <= ' ' || c == ','; }
    static bool isBracket(char c) { return c == '{' || c == '}' || c == '[' || c == ']'; }

    void skip() {
        while (m_place < m_text.size() && (isSpace(m_text[m_place]) || m_text[m_place] == '#'))
            m_place = m_text[m_place] == '#' ? std::min(m_text.find('\n', m_place), m_text.size())
                                             : m_place + 1;
    }

    const std::string& m_text;
    std::size_t m_place = 0;
};

class InventorLook {
public:
    explicit InventorLook(const std::string& text) : m_words(text) { m_blocks.emplace_back(); }

    std::optional<std::string> run() {
        std::string word;
        std::string former;
        while (!m_fault && m_words.next(word)) {
            take(word, former);
            former = word;
        }
        return m_fault;
    }

    /// The files that it includes, as they are named there.
    const std::vector<std::string>& included() const { return m_included; }

private:
    struct Block {
        std::string node;
        std::string name; ///< given to it by DEF
        Counts counts = nothingKnown;
        Counts highest = nothingKnown; ///< indices into these
        std::int64_t first = 0;        ///< point of those that come one after the other
        std::int64_t used = 0;         ///< of them
        std::int64_t area = 1;         ///< rows times columns
        bool hasSides = false;
        std::string prototype; ///< whose declaration it is
    };

    void take(const std::string& word, const std::string& former) {
        if (word == "{")
            begin(former);
        else if (word == "}")
            end();
        else if (word == "[")
            takeList(former);
        else if (word == "IS")
            takeConnection(former);
        else if (former == "PROTO")
            m_prototype = word;
        else if (former == "EXTERNPROTO")
            m_isElsewhere = true;
        else if (former == "DEF")
            m_nextName = word;
        else if (former == "USE")
            use(word);
        else if (word.front() == '"' &&
                 (m_isElsewhere || inclusions.count(m_blocks.back().node) != 0))
            m_included.push_back(word.substr(1, word.find('#') - 1));
        else
            takeNumber(former, word);
    }

    void takeNumber(const std::string& field, const std::string& word) {
        Block& block = m_blocks.back();
        const std::int64_t number = std::strtol(word.c_str(), nullptr, 0);
        const Source* source = sourceOf(block.node);
        if (const IndexField* index = indexFieldOf(field)) {
            takeIndex(*index, word);
        } else if (source && field == source->field) {
            block.counts[source->kind] = 1;
        } else if (field == "startIndex") {
            block.first = number;
        } else if (countFields.count(field) != 0) {
            block.used += std::max<std::int64_t>(number, 0);
        } else if (sideFields.count(field) != 0) {
            block.hasSides = true;
            block.area = number > 0 && block.area < mostPoints ? block.area * number : 0;
        }
    }

    /// What a prototype's user will put there cannot be held against anything.
    void takeConnection(const std::string& field) {
        const Source* source = sourceOf(m_blocks.back().node);
        if (indexFieldOf(field) || (source && field == source->field) ||
            countFields.count(field) != 0 || sideFields.count(field) != 0 || field == "startIndex")
            m_fault = "a prototype puts together points and indices";
    }

    void begin(const std::string& node) {
        Block block;
        block.node = node;
        block.name = m_nextName;
        // What stands in brackets before it is the prototype's interface.
        if (node == "]")
            block.prototype.swap(m_prototype);
        m_isElsewhere = false;
        if (isInsidePrototype(node))
            m_fault = "a prototype contains itself";
        block.counts = m_blocks.back().counts;
        m_nextName.clear();
        m_blocks.push_back(block);
        if (m_blocks.size() > deepestBlock)
            m_fault = "nodes are nested too deeply";
    }

    bool isInsidePrototype(const std::string& node) const {
        return std::any_of(m_blocks.begin(), m_blocks.end(), [&](const Block& block) {
            return !block.prototype.empty() && block.prototype == node;
        });
    }

    void end() {
        if (m_blocks.size() < 2)
            return;
        const Block block = m_blocks.back();
        m_blocks.pop_back();
        check(block);
        const Source* source = sourceOf(block.node);
        Counts& outside = m_blocks.back().counts;
        if (source) {
            outside[source->kind] = block.counts[source->kind];
            m_named[block.name] = nothingKnown;
            m_named[block.name][source->kind] = block.counts[source->kind];
        } else if (openGroups.count(block.node) != 0) {
            outside = block.counts;
            m_named[block.name] = block.counts;
        }
    }

    void use(const std::string& name) {
        if (std::any_of(m_blocks.begin(), m_blocks.end(),
                        [&](const Block& block) { return block.name == name; }))
            m_fault = "a node contains itself";
        const auto found = m_named.find(name);
        if (found == m_named.end())
            return;
        for (std::size_t kind = 0; kind < IndexedKinds; ++kind)
            if (found->second[kind] != unknown)
                m_blocks.back().counts[kind] = found->second[kind];
    }

    void takeIndex(const IndexField& index, const std::string& word) {
        long& highest = m_blocks.back().highest[index.kind];
        highest = std::max(highest, std::strtol(word.c_str(), nullptr, 0));
    }

    /// Takes what stands in brackets, if it is numbers or texts; a list of nodes is gone through.
    void takeList(const std::string& field) {
        const Source* source = sourceOf(m_blocks.back().node);
        const IndexField* index = indexFieldOf(field);
        if (countFields.count(field) != 0) {
            for (std::string word; m_words.next(word) && word != "]";)
                takeNumber(field, word);
            return;
        }
        if (!index && !(source && field == source->field))
            return;
        long count = 0;
        for (std::string word; m_words.next(word) && word != "]"; ++count)
            if (index)
                takeIndex(*index, word);
        if (!index)
            m_blocks.back().counts[source->kind] = count / source->numbers;
    }

    void check(const Block& block) {
        // Where there are no points at all, indices into them are followed all the same.
        for (std::size_t kind = 0; kind < IndexedKinds; ++kind)
            if ((kind == Points || block.counts[kind] != unknown) &&
                block.highest[kind] >= std::max(block.counts[kind], 0L))
                m_fault = "an index goes beyond what it counts";
        const std::int64_t used = block.hasSides ? block.area : block.used;
        if (block.first < 0 ||
            (block.first + used > 0 && block.counts[Points] < block.first + used))
            m_fault = "more points are announced than there are";
    }

    Words m_words;
    std::vector<Block> m_blocks;
    std::map<std::string, Counts> m_named;
    std::string m_prototype;    ///< whose declaration begins
    bool m_isElsewhere = false; ///< the declaration is in another file
    std::string m_nextName;
    std::vector<std::string> m_included;
    std::optional<std::string> m_fault;
};

/// The text of a file, which may be packed; nothing where it unpacks to far too much, or is packed
/// in the other way that its reader knows.
std::optional<std::string> textOf(const fs::path& file) {
    constexpr std::uintmax_t mostUnpacked = 100;
    constexpr unsigned int pieceSize = 1 << 16;
    std::error_code error;
    const std::uintmax_t most = mostUnpacked * fs::file_size(file, error) + pieceSize;
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> stream(gzopen(file.string().c_str(), "rb"),
                                                            gzclose);
    std::string text;
    std::vector<char> piece(pieceSize);
    for (int count = 0; stream && (count = gzread(stream.get(), piece.data(), pieceSize)) > 0;) {
        text.append(piece.data(), static_cast<std::size_t>(count));
        if (text.size() > most)
            return std::nullopt;
    }
    if (text.compare(0, 3, "BZh") == 0)
        return std::nullopt;
    return text;
}

std::optional<std::string> lookAtFile(const fs::path& path, std::vector<fs::path>& open) {
    std::error_code error;
    const fs::path file = fs::canonical(path, error);
    if (error || !fs::is_regular_file(file, error))
        return std::nullopt;
    if (std::find(open.begin(), open.end(), file) != open.end() || open.size() >= deepestInclusion)
        return "files that include each other without end are not read";
    const std::optional<std::string> text = textOf(file);
    if (!text)
        return "files that are packed like this are not read";
    InventorLook look(*text);
    std::optional<std::string> fault = look.run();
    open.push_back(file);
    for (const std::string& name : look.included())
        if (!fault)
            fault = lookAtFile(file.parent_path() / name, open);
    open.pop_back();
    return fault;
}

} // namespace

std::optional<std::string> inventorRefusal(const std::string& path) {
    std::vector<fs::path> open;
    return lookAtFile(path, open);
}

} // namespace orbisk
