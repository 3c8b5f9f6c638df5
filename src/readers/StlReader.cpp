#include "readers/StlReader.h"

#include "readers/ByteReader.h"
#include "readers/FacetMesh.h"
#include "readers/SeparateLines.h"
#include "readers/TextWords.h"

#include <osg/Geode>
#include <osg/Group>
#include <osg/Notify>
#include <osgDB/FileNameUtils>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace orbisk {

namespace {

// A binary file: a header of any text, the number of facets, and for each of those a normal, three
// corners and a word, which a colour may stand in.
constexpr std::size_t headerSize = 80;
constexpr std::size_t facetsBegin = headerSize + sizeof(std::uint32_t);
constexpr std::size_t normalSize = 3 * sizeof(float);
constexpr std::size_t colourOffset = 4 * normalSize;
constexpr std::size_t facetSize = colourOffset + sizeof(std::uint16_t);

/// The bit that tells of a colour; with a colour in the header, of that one.
constexpr unsigned int colourFlag = 0x8000;
constexpr unsigned int colourBits = 5;
constexpr unsigned int mostOfColour = (1u << colourBits) - 1;

/// What stands in a header before a colour in four bytes.
constexpr std::string_view headerColour = "COLOR=";

/// How much of a file is looked at to tell text from numbers.
constexpr std::size_t textSample = 1024;

std::uint64_t claimedFacets(std::string_view bytes) {
    return loadNumber<std::uint32_t>(bytes.data() + headerSize, isForeign(ByteOrder::LittleEndian));
}

/// Whether bytes could be text, of whatever encoding.
bool looksLikeText(std::string_view bytes) {
    const std::string_view sample = bytes.substr(0, textSample);
    return std::all_of(sample.begin(), sample.end(), [](char byte) {
        const auto value = static_cast<unsigned char>(byte);
        return value >= ' ' || std::isspace(value) != 0;
    });
}

/// Text and numbers both may begin with "solid". What fits its number of facets is binary; else it
/// is what it looks like.
bool isBinary(std::string_view bytes) {
    if (bytes.size() < facetsBegin)
        return false;
    return bytes.size() == facetsBegin + claimedFacets(bytes) * facetSize || !looksLikeText(bytes);
}

/// How many facets of a binary file there are. Where the number is larger than that, the file was
/// cut; where it is zero, it was never filled in.
std::size_t facetsIn(std::string_view bytes) {
    const std::uint64_t claimed = claimedFacets(bytes);
    const std::uint64_t there = (bytes.size() - facetsBegin) / facetSize;
    return static_cast<std::size_t>(claimed == 0 ? there : std::min(claimed, there));
}

osg::Vec3 loadVector(const char* at) {
    const bool foreign = isForeign(ByteOrder::LittleEndian);
    return {loadNumber<float>(at, foreign), loadNumber<float>(at + sizeof(float), foreign),
            loadNumber<float>(at + 2 * sizeof(float), foreign)};
}

std::optional<osg::Vec4> colourInHeader(std::string_view bytes) {
    constexpr std::size_t channels = 4;
    const std::size_t found = bytes.substr(0, headerSize - channels).find(headerColour);
    if (found == std::string_view::npos)
        return std::nullopt;
    osg::Vec4 colour;
    for (std::size_t i = 0; i < channels; ++i) {
        const auto byte = static_cast<unsigned char>(bytes[found + headerColour.size() + i]);
        colour[static_cast<int>(i)] = static_cast<float>(byte) / 255.0f;
    }
    return colour;
}

/// The facets of a binary file.
class BinaryFacets {
public:
    explicit BinaryFacets(std::string_view bytes)
        : m_facets(bytes.data() + facetsBegin), m_count(facetsIn(bytes)),
          m_headerColour(colourInHeader(bytes)) {}

    FacetMesh read() const {
        FacetMesh mesh(areColoured(), m_count);
        for (std::size_t i = 0; i < m_count; ++i)
            mesh.add(facetAt(i));
        return mesh;
    }

private:
    bool areColoured() const {
        if (m_headerColour)
            return true;
        for (std::size_t i = 0; i < m_count; ++i)
            if ((colourWord(i) & colourFlag) == 0)
                return false;
        return true;
    }

    unsigned int colourWord(std::size_t facet) const {
        return loadNumber<std::uint16_t>(m_facets + facet * facetSize + colourOffset,
                                         isForeign(ByteOrder::LittleEndian));
    }

    FacetMesh::Facet facetAt(std::size_t i) const {
        const char* at = m_facets + i * facetSize;
        FacetMesh::Facet facet;
        for (std::size_t corner = 0; corner < facet.corners.size(); ++corner)
            facet.corners[corner] = loadVector(at + (corner + 1) * normalSize);
        // The one in the file is often left at zero.
        const osg::Vec3& first = facet.corners[0];
        facet.normal = (facet.corners[1] - first) ^ (facet.corners[2] - first);
        facet.normal.normalize();
        facet.colour = colour(colourWord(i));
        return facet;
    }

    /// Programs that put a colour into the header have red in the low bits, others blue.
    osg::Vec4 colour(unsigned int word) const {
        if (m_headerColour && (word & colourFlag) != 0)
            return *m_headerColour;
        const auto channel = [word](unsigned int place) {
            return static_cast<float>((word >> (place * colourBits)) & mostOfColour) /
                   static_cast<float>(mostOfColour);
        };
        return m_headerColour ? osg::Vec4(channel(0), channel(1), channel(2), 1.0f)
                              : osg::Vec4(channel(2), channel(1), channel(0), 1.0f);
    }

    const char* m_facets;
    std::size_t m_count;
    std::optional<osg::Vec4> m_headerColour;
};

void addSolid(osg::Group& model, FacetMesh& mesh, const std::string& name) {
    if (mesh.isEmpty())
        return;
    const osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(mesh.takeGeometry());
    geode->setName(name);
    model.addChild(geode);
}

osg::Vec3 vectorOf(std::string_view line) {
    osg::Vec3 vector;
    for (int i = 0; i < 3; ++i)
        vector[i] = static_cast<float>(numberOf(takeWord(line)));
    return vector;
}

/// The solids of a text file.
class TextSolids {
public:
    explicit TextSolids(std::string_view text) : m_text(text) {}

    /// Null where there is neither a solid nor a facet.
    osg::ref_ptr<osg::Group> read() {
        SeparateLines lines(m_text);
        while (lines.next())
            takeLine(lines.line());
        addSolid(*m_model, m_mesh, m_name);
        return m_isStl ? m_model : nullptr;
    }

private:
    void takeLine(std::string_view line) {
        const std::string_view keyword = takeWord(line);
        if (isWord(keyword, "vertex")) {
            addCorner(vectorOf(line));
        } else if (isWord(keyword, "facet")) {
            m_isStl = true;
            takeWord(line);
            m_facet.normal = vectorOf(line);
            m_facet.normal.normalize();
            m_corners = 0;
            m_inFacet = true;
        } else if (isWord(keyword, "endfacet")) {
            m_inFacet = false;
        } else if (isWord(keyword, "solid")) {
            m_isStl = true;
            m_name = trimmed(line);
        } else if (isWord(keyword, "endsolid")) {
            addSolid(*m_model, m_mesh, m_name);
            m_name.clear();
            m_inFacet = false;
        }
    }

    /// A facet may have more than three corners, against the rules: they make a fan.
    void addCorner(const osg::Vec3& corner) {
        constexpr std::size_t enough = 3;
        if (!m_inFacet)
            return;
        if (m_corners < enough) {
            m_facet.corners[m_corners++] = corner;
        } else {
            m_facet.corners[1] = m_facet.corners[2];
            m_facet.corners[2] = corner;
        }
        if (m_corners == enough)
            m_mesh.add(m_facet);
    }

    std::string_view m_text;
    osg::ref_ptr<osg::Group> m_model = new osg::Group;
    FacetMesh m_mesh;
    std::string m_name;
    FacetMesh::Facet m_facet;
    bool m_inFacet = false;
    std::size_t m_corners = 0; ///< of the facet, so far
    bool m_isStl = false;
};

} // namespace

StlReader::StlReader() {
    supportsExtension("stl", "Stereolithography format");
    supportsExtension("sta", "Stereolithography format, text");
}

osgDB::ReaderWriter::ReadResult StlReader::readBytes(FileBytes file, const std::string& fileName,
                                                     const osgDB::Options*) const {
    const std::string_view bytes = file.view();
    osg::ref_ptr<osg::Group> model;
    if (!isBinary(bytes)) {
        model = TextSolids(bytes).read();
    } else {
        if (facetsIn(bytes) < claimedFacets(bytes))
            OSG_WARN << fileName << " has " << facetsIn(bytes) << " of " << claimedFacets(bytes)
                     << " facets." << std::endl;
        model = new osg::Group;
        FacetMesh mesh = BinaryFacets(bytes).read();
        addSolid(*model, mesh, {});
    }
    if (!model)
        return ReadResult::ERROR_IN_READING_FILE;
    return model.get();
}

} // namespace orbisk
