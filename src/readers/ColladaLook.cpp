#include "readers/ColladaLook.h"

#include <libxml/xmlreader.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orbisk {

namespace {

/// Deeper than this no model nests its nodes; the reader calls itself for each level.
constexpr int deepestElement = 1000;

/// The reader steps through indices in strides as long as the highest offset among the inputs.
constexpr long long mostInputs = 64;

using Reader = std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)>;

std::string attributeOf(xmlTextReader* reader, const char* name) {
    xmlChar* value = xmlTextReaderGetAttribute(reader, reinterpret_cast<const xmlChar*>(name));
    if (!value)
        return {};
    std::string text = reinterpret_cast<const char*>(value);
    xmlFree(value);
    return text;
}

/// Which nodes hold which others, by their identities.
class NodeGraph {
public:
    /// Takes the start of an element at this depth of the document.
    void begin(xmlTextReader* reader, const std::string& element, int depth) {
        while (!m_open.empty() && m_open.back().depth >= depth)
            m_open.pop_back();
        if (element == "node") {
            std::string id = attributeOf(reader, "id");
            if (id.empty())
                id = "unnamed " + std::to_string(++m_unnamed);
            hold(id);
            m_open.push_back({depth, id});
        } else if (element == "instance_node") {
            const std::string address = attributeOf(reader, "url");
            hold(address.substr(address.find('#') + 1));
        }
    }

    bool hasCircle() const {
        std::set<std::string> done;
        for (const auto& entry : m_held)
            if (isInCircle(entry.first, done))
                return true;
        return false;
    }

private:
    struct Open {
        int depth;
        std::string id;
    };

    struct Visit {
        std::string id;
        std::set<std::string>::const_iterator next;
    };

    void hold(const std::string& id) {
        if (!m_open.empty())
            m_held[m_open.back().id].insert(id);
    }

    /// Walks what is below a node with a stack of its own; what is done is not walked again.
    bool isInCircle(const std::string& start, std::set<std::string>& done) const {
        static const std::set<std::string> nothing;
        const auto heldBy = [&](const std::string& id) -> const std::set<std::string>& {
            const auto found = m_held.find(id);
            return found == m_held.end() ? nothing : found->second;
        };
        std::vector<Visit> path = {{start, heldBy(start).begin()}};
        std::set<std::string> open = {start};
        while (!path.empty()) {
            Visit& visit = path.back();
            if (visit.next == heldBy(visit.id).end()) {
                done.insert(visit.id);
                open.erase(visit.id);
                path.pop_back();
                continue;
            }
            const std::string child = *visit.next++;
            if (open.count(child) != 0)
                return true;
            if (done.count(child) != 0)
                continue;
            open.insert(child);
            path.push_back({child, heldBy(child).begin()});
        }
        return false;
    }

    std::map<std::string, std::set<std::string>> m_held;
    std::vector<Open> m_open;
    int m_unnamed = 0;
};

/// How many numbers the sources have, and how many are taken from them.
class SourceSizes {
public:
    void begin(xmlTextReader* reader, const std::string& element) {
        m_isInNumbers = element == "float_array";
        if (element == "source") {
            m_numbers = 0;
            m_hasNumbers = false;
        } else if (m_isInNumbers) {
            m_hasNumbers = true;
        } else if (element == "accessor") {
            check(reader);
        } else if (element == "input" && numberOf(reader, "offset", 0) > mostInputs) {
            m_areShort = true;
        }
    }

    void text(const char* words) {
        if (m_isInNumbers)
            m_numbers += countWords(words);
    }

    bool areShort() const { return m_areShort; }

private:
    static long long countWords(const char* text) {
        long long count = 0;
        bool isInWord = false;
        for (; *text; ++text) {
            const bool isLetter = static_cast<unsigned char>(*text) > ' ';
            count += isLetter && !isInWord ? 1 : 0;
            isInWord = isLetter;
        }
        return count;
    }

    static long long numberOf(xmlTextReader* reader, const char* name, long long otherwise) {
        const std::string text = attributeOf(reader, name);
        return text.empty() ? otherwise : std::strtoll(text.c_str(), nullptr, 10);
    }

    /// The reader takes as many numbers as the accessor says, from the array of the same source.
    void check(xmlTextReader* reader) {
        const long long count = numberOf(reader, "count", 0);
        const long long stride = numberOf(reader, "stride", 1);
        if (!m_hasNumbers || count == 0)
            return;
        if (count < 0 || stride < 1 || stride > m_numbers || count > m_numbers / stride)
            m_areShort = true;
    }

    long long m_numbers = 0;
    bool m_hasNumbers = false;
    bool m_isInNumbers = false;
    bool m_areShort = false;
};

/// Whether the element takes something from another document. The reader would open whatever stands
/// there, a device as well, and neither that document nor a circle of them was looked at.
bool refersElsewhere(xmlTextReader* reader) {
    for (const char* attribute : {"url", "source"}) {
        const std::string address = attributeOf(reader, attribute);
        if (!address.empty() && address.front() != '#')
            return true;
    }
    return false;
}

void ignoreErrors(void*, const char*, xmlParserSeverities, xmlTextReaderLocatorPtr) {}

} // namespace

std::optional<std::string> colladaRefusal(const std::string& path) {
    // Models have longer lists of numbers than the parser takes unasked.
    const Reader reader(xmlReaderForFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_HUGE),
                        &xmlFreeTextReader);
    if (!reader)
        return std::nullopt;
    xmlTextReaderSetErrorHandler(reader.get(), ignoreErrors, nullptr);
    NodeGraph nodes;
    SourceSizes sources;
    int state = xmlTextReaderRead(reader.get());
    for (; state == 1; state = xmlTextReaderRead(reader.get())) {
        const int type = xmlTextReaderNodeType(reader.get());
        // It can define texts that grow without end, or that come from other files.
        if (type == XML_READER_TYPE_DOCUMENT_TYPE)
            return "documents with definitions of their own are not read";
        if (type == XML_READER_TYPE_TEXT)
            sources.text(reinterpret_cast<const char*>(xmlTextReaderConstValue(reader.get())));
        if (type != XML_READER_TYPE_ELEMENT)
            continue;
        const int depth = xmlTextReaderDepth(reader.get());
        if (depth > deepestElement)
            return "elements are nested too deeply";
        if (refersElsewhere(reader.get()))
            return "documents that refer to others are not read";
        const auto* name = reinterpret_cast<const char*>(xmlTextReaderConstLocalName(reader.get()));
        const std::string element = name ? name : "";
        nodes.begin(reader.get(), element, depth);
        sources.begin(reader.get(), element);
    }
    if (state != 0)
        return "the document is damaged";
    if (nodes.hasCircle())
        return "a node is inside itself";
    if (sources.areShort())
        return "a source has fewer numbers than are taken from it";
    return std::nullopt;
}

} // namespace orbisk
