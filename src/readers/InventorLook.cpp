#include "readers/InventorLook.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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
    };

    void take(const std::string& word, const std::string& former) {
        if (word == "{")
            begin(former);
        else if (word == "}")
            end();
        else if (word == "[")
            takeList(former);
        else if (former == "DEF")
            m_nextName = word;
        else if (former == "USE")
            use(word);
        else if (word.front() == '"' && inclusions.count(m_blocks.back().node) != 0)
            m_included.push_back(word.substr(1));
        else if (const IndexField* index = indexFieldOf(former))
            takeIndex(*index, word);
    }

    void begin(const std::string& node) {
        Block block;
        block.node = node;
        block.name = m_nextName;
        block.counts = m_blocks.back().counts;
        m_nextName.clear();
        m_blocks.push_back(block);
        if (m_blocks.size() > deepestBlock)
            m_fault = "nodes are nested too deeply";
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
            m_named[block.name] = {source->kind, block.counts[source->kind]};
        } else if (openGroups.count(block.node) != 0) {
            outside = block.counts;
        }
    }

    void use(const std::string& name) {
        const auto found = m_named.find(name);
        if (found != m_named.end())
            m_blocks.back().counts[found->second.first] = found->second.second;
    }

    void takeIndex(const IndexField& index, const std::string& word) {
        long& highest = m_blocks.back().highest[index.kind];
        highest = std::max(highest, std::strtol(word.c_str(), nullptr, 0));
    }

    /// Takes what stands in brackets, if it is numbers or texts; a list of nodes is gone through.
    void takeList(const std::string& field) {
        const Source* source = sourceOf(m_blocks.back().node);
        const IndexField* index = indexFieldOf(field);
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
        for (std::size_t kind = 0; kind < IndexedKinds; ++kind)
            if (block.counts[kind] != unknown && block.highest[kind] >= block.counts[kind])
                m_fault = "an index goes beyond what it counts";
    }

    Words m_words;
    std::vector<Block> m_blocks;
    std::map<std::string, std::pair<Indexed, long>> m_named;
    std::string m_nextName;
    std::vector<std::string> m_included;
    std::optional<std::string> m_fault;
};

std::optional<std::string> lookAtFile(const fs::path& path, std::vector<fs::path>& open) {
    std::error_code error;
    const fs::path file = fs::canonical(path, error);
    if (error || !fs::is_regular_file(file, error))
        return std::nullopt;
    if (std::find(open.begin(), open.end(), file) != open.end() || open.size() >= deepestInclusion)
        return "files that include each other without end are not read";
    std::ifstream stream(file, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(stream)),
                           std::istreambuf_iterator<char>());
    InventorLook look(text);
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
