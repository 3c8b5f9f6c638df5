// What the library's own reader makes of good files, this one makes too: the same triangles in the
// same order, digit by digit, with the same normals, colours, texture coordinates and state.

#include "readers/ModelReaders.h"
#include "support/PackagedReader.h"
#include "support/SceneDescription.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osgDB/Options>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <set>
#include <sstream>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

std::string describe(const osgDB::ReaderWriter& reader, const std::string& file,
                     const std::string& optionText) {
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options(optionText);
    const osg::ref_ptr<osg::Node> scene = reader.readNode(file, options).getNode();
    return scene ? describeScene(*scene) : "nothing";
}

class ObjSameAsLibraryTest : public testing::Test {
protected:
    void SetUp() override {
        m_library = packagedReader("obj", "Wavefront OBJ Reader");
        ASSERT_NE(m_library, nullptr);
    }

    /// Whether both readers give the same scene; its description otherwise would fill the log.
    bool areSame(const std::string& file, const std::string& optionText = "") {
        return describe(*m_library, file, optionText) ==
               describe(*modelReaderFor("obj"), file, optionText);
    }

    QuietLibrary m_quiet;
    osgDB::ReaderWriter* m_library = nullptr;
};

/// Writes files as many programs do, each with its own way of it.
class RandomObj {
public:
    explicit RandomObj(unsigned int seed) : m_random(seed) {}

    std::string text() {
        m_hasColours = oneIn(5);
        writeValues();
        const unsigned int elements = 1 + below(60);
        for (unsigned int i = 0; i < elements; ++i)
            writeElement();
        std::string text = m_text.str();
        if (!oneIn(4))
            return text;
        std::string withReturns;
        for (const char character : text)
            withReturns += character == '\n' ? "\r\n" : std::string(1, character);
        return withReturns;
    }

private:
    unsigned int below(unsigned int count) { return m_random() % count; }
    bool oneIn(unsigned int count) { return below(count) == 0; }
    /// Few of them, so that some are equal.
    std::string number() {
        std::ostringstream text;
        text << static_cast<int>(below(41)) - 20;
        if (!oneIn(3))
            text << "." << below(1000);
        if (oneIn(20))
            text << "e-1";
        return text.str();
    }

    void writeValues() {
        for (unsigned int i = 0; i < m_positions; ++i) {
            m_text << "v " << number() << (oneIn(9) ? "\t" : " ") << number() << "  " << number();
            if (m_hasColours)
                m_text << " 0." << below(10) << " 0.5 1";
            else if (oneIn(10))
                m_text << " 2.5";
            m_text << "\n";
        }
        for (unsigned int i = 0; i < m_others; ++i)
            m_text << "vt " << number() << " " << number() << "\nvn " << number() << " " << number()
                   << " " << number() << "\n";
    }

    void writeElement() {
        if (oneIn(8))
            m_text << (oneIn(2) ? "g " : "o ") << below(4) << "\n";
        if (oneIn(8))
            m_text << "usemtl m" << below(3) << "\n";
        if (oneIn(12))
            m_text << "s " << below(3) << "\n";
        if (oneIn(12))
            m_text << "# a comment\n\n";
        const bool hasTextures = oneIn(2);
        const bool hasNormals = oneIn(3);
        const bool isLarge = oneIn(4);
        writeFace(isLarge ? 5 + below(6) : 3 + below(2), hasTextures, hasNormals);
        // The library leaves vertices of geometries unshared, and their triangles in another order,
        // where each face is a large one.
        if (isLarge)
            writeFace(3, hasTextures, hasNormals);
    }

    void writeFace(unsigned int count, bool hasTextures, bool hasNormals) {
        m_text << "f";
        std::set<unsigned int> used;
        while (used.size() < count) {
            const unsigned int position = below(m_positions);
            if (used.insert(position).second)
                writeCorner(position, hasTextures, hasNormals);
            if (oneIn(40) && used.size() < count)
                m_text << " \\\n";
        }
        m_text << "\n";
    }

    void writeCorner(unsigned int position, bool hasTextures, bool hasNormals) {
        m_text << " " << index(position, m_positions);
        if (hasTextures || hasNormals)
            m_text << "/";
        if (hasTextures)
            m_text << index(below(m_others), m_others);
        if (hasNormals)
            m_text << "/" << index(below(m_others), m_others);
    }

    int index(unsigned int value, unsigned int count) {
        const int fromStart = static_cast<int>(value) + 1;
        return oneIn(5) ? fromStart - static_cast<int>(count) - 1 : fromStart;
    }

    std::mt19937 m_random;
    std::ostringstream m_text;
    const unsigned int m_positions = 30;
    const unsigned int m_others = 8;
    bool m_hasColours = false;
};

} // namespace

TEST_F(ObjSameAsLibraryTest, OnRandomFiles) {
    const WorkingFolder folder;
    writeFile("m.mtl", "newmtl m0\nKd 1 0 0\nd 0.5\nNs 250\nnewmtl m1\nKa 1 1 1\nillum 1\n"
                       "Ks 1 1 1\n");
    const std::vector<std::string> optionTexts{"", "noRotation", "generateFacetNormals",
                                               "noReverseFaces NsIfNotPresent=100",
                                               "noTesselateLargePolygons"};
    for (unsigned int seed = 0; seed < 300; ++seed) {
        writeFile("random.obj", "mtllib m.mtl\n" + RandomObj(seed).text());
        EXPECT_TRUE(areSame("random.obj", optionTexts[seed % optionTexts.size()])) << seed;
    }
}

TEST_F(ObjSameAsLibraryTest, OnALargerMesh) {
    const WorkingFolder folder;
    constexpr int across = 300;
    std::ostringstream text;
    std::mt19937 random(3);
    for (int i = 0; i < across * across; ++i)
        text << "v " << i % across << " " << random() % 1000 / 100.0 << " " << i / across
             << "\nvt 0." << i % across << " 0." << i / across << "\n";
    for (int i = 0; i + across + 1 < across * across; ++i) {
        if (i % across + 1 == across)
            continue;
        const auto corner = [&](int at) { text << " " << at + 1 << "/" << at + 1; };
        text << "f";
        corner(i);
        corner(i + 1);
        corner(i + across + 1);
        corner(i + across);
        text << "\n";
    }
    writeFile("large.obj", text.str());
    EXPECT_TRUE(areSame("large.obj"));
}

TEST_F(ObjSameAsLibraryTest, OnTheSamples) {
    const fs::path sample = fs::path(ORBISK_STAGE_DIR) / "samples" / "valley.obj";
    ASSERT_TRUE(fs::exists(sample));
    EXPECT_TRUE(areSame(sample.string()));
}

TEST_F(ObjSameAsLibraryTest, OnRealModels) {
    const char* const folder = std::getenv("ORBISK_MODELS");
    if (!folder)
        GTEST_SKIP() << "ORBISK_MODELS names no folder of models";
    // In these the library's reader loses digits, segments of lines, and colours that are no
    // number.
    const std::set<std::string> better{"tin_utm_textured.obj", "testmixed.obj", "nancolor.obj"};
    int count = 0;
    for (const char* part : {"obj", "rifle_in_4_formats", "generated"})
        for (const auto& entry : fs::directory_iterator(fs::path(folder) / part))
            if (entry.path().extension() == ".obj" &&
                !better.count(entry.path().filename().string())) {
                EXPECT_TRUE(areSame(entry.path().string())) << entry.path();
                ++count;
            }
    EXPECT_GT(count, 10);
}

} // namespace orbisk::test
