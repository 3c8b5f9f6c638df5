// What the program reads of IVE files, and what of them it keeps from the library's reader: files
// that the library writes itself, with numbers of theirs exchanged.

#include "readers/IveLook.h"

#include "damage/Damage.h"
#include "damage/LookOutcome.h"
#include "support/IveModels.h"
#include "support/MeshFiles.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"
#include "view/ReadGuard.h"

#include <gtest/gtest.h>
#include <osg/Billboard>
#include <osg/MatrixTransform>
#include <osg/PolygonStipple>
#include <osg/ProxyNode>
#include <osg/Texture2D>
#include <osgDB/FileNameUtils>
#include <osgDB/ReadFile>
#include <osgDB/WriteFile>
#include <osgTerrain/TerrainTile>
#include <osgText/Text>
#include <zlib.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace orbisk::test {

namespace {

/// Numbers that stand nowhere else in a file.
constexpr float mark = 12345.678f;
const osg::Vec3 markedPlace(mark, -mark, mark);

bool isImage(const std::string& name) {
    return osgDB::getFileExtension(name) == "png";
}

bool isFine(const std::string& bytes) {
    return !iveRefusal(bytes, isImage);
}

template <typename Number>
std::string bytesOf(const std::vector<Number>& numbers) {
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

/// Exchanges bytes that must be there.
std::string replaced(std::string bytes, const std::string& from, const std::string& to) {
    const std::size_t place = bytes.find(from);
    EXPECT_NE(place, std::string::npos);
    if (place != std::string::npos)
        bytes.replace(place, from.size(), to);
    return bytes;
}

/// The head of a file and the group in it, which is the first of its records and has no children.
/// @param state the flag of its state, and the state.
std::string groupFile(std::uint32_t version, bool turned,
                      const std::string& state = std::string(1, '\0')) {
    Bytes bytes(turned);
    const auto whole = [&](std::uint32_t number) { bytes.put(number); };
    whole(0x01020304);
    whole(version);
    if (version >= 33)
        whole(0);
    for (const std::uint32_t tag : {0, 3, 2, 1})
        whole(tag);
    if (version >= 12)
        whole(0);
    bytes.put('\0');
    if (version >= 31)
        bytes.put('\0');
    if (version < 12)
        whole(0);
    bytes.put('\1');
    whole(0);
    bytes.putBytes(state).put('\0');
    for (const std::uint32_t since : {6, 39, 10})
        if (version >= since)
            bytes.put('\0');
    whole(0xffffffff);
    whole(0);
    return bytes.bytes();
}

/// A packed file of a group and of zeros behind it, which nobody reads.
std::string packedFile(std::size_t zeros) {
    const std::string content = groupFile(45, false).substr(12) + std::string(zeros, '\0');
    uLongf size = compressBound(content.size());
    std::string packed(size, '\0');
    EXPECT_EQ(compress(reinterpret_cast<Bytef*>(packed.data()), &size,
                       reinterpret_cast<const Bytef*>(content.data()), content.size()),
              Z_OK);
    const auto largestPiece = static_cast<std::uint32_t>(content.size());
    return bytesOf<std::uint32_t>({0x01020304, 45, 1, largestPiece}) + packed.substr(0, size);
}

class IveLookTest : public testing::Test {
protected:
    /// How the program fares with these bytes.
    static std::string outcomeOf(const std::string& bytes) {
        writeFile("model.ive", bytes);
        return lookAt(ORBISK_LOOK_AT_MODEL, "model.ive", "messages").text();
    }

    static void expectRefused(const std::string& good, const std::string& bad) {
        EXPECT_TRUE(isFine(good));
        EXPECT_FALSE(isFine(bad));
        EXPECT_EQ(outcomeOf(bad), "refused");
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

/// A shape as files of old have it, which the library writes as a geometry today.
std::string shapeFile(std::uint32_t tag, const std::string& fields) {
    const std::string object = bytesOf<std::uint32_t>({0x1, 0}) + std::string(2, '\0');
    const std::string geode = iveFile(*osg::ref_ptr<osg::Geode>(new osg::Geode));
    return geode.substr(0, geode.size() - sizeof(std::uint32_t)) +
           bytesOf<std::uint32_t>({1, 5, 0x1002, 0x1000}) + object + std::string(6, '\0') +
           std::string(16, '\0') + '\1' + bytesOf<std::uint32_t>({6, tag}) + object + fields;
}

/// A height field of that area, with some heights.
std::string heightFieldOf(std::uint32_t columns, std::uint32_t rows, std::uint32_t heights = 77) {
    return shapeFile(0x2007, bytesOf<std::uint32_t>({columns, rows}) +
                                 bytesOf<float>({0, 0, 0, 1, 1, 0, 0, 0, 1, 0}) +
                                 bytesOf<std::uint32_t>({0, heights}) +
                                 std::string(heights * sizeof(float), '\0'));
}

} // namespace

TEST_F(IveLookTest, WhateverTheLibraryWritesIsReadToItsEnd) {
    for (const IveModel& model : iveModels()) {
        const std::string bytes = iveFile(*model.node);
        EXPECT_EQ(iveRefusal(bytes, isImage).value_or(""), "") << model.name;
        EXPECT_FALSE(isFine(bytes.substr(0, bytes.size() - 1))) << model.name;
    }
}

TEST_F(IveLookTest, FilesOfAnyVersionAndByteOrderAreFine) {
    for (std::uint32_t version = 0; version <= 45; ++version)
        for (const bool turned : {false, true}) {
            const std::string bytes = groupFile(version, turned);
            EXPECT_TRUE(isFine(bytes)) << version;
            EXPECT_EQ(outcomeOf(bytes), "looked at") << version;
        }
    EXPECT_FALSE(isFine(groupFile(46, false)));
    EXPECT_FALSE(isFine(""));
    EXPECT_FALSE(isFine("something else, of no matter which length"));
}

TEST_F(IveLookTest, PackedFilesAreUnpackedAndLookedAt) {
    const osg::ref_ptr<osg::Billboard> model = new osg::Billboard;
    model->addDrawable(makeQuad(), markedPlace);
    const std::string plain = iveFile(*model);
    const std::string packed = iveFile(*model, "compressed");
    ASSERT_NE(packed, plain);
    EXPECT_FALSE(isPackedIve(plain));
    EXPECT_TRUE(isPackedIve(packed));
    EXPECT_TRUE(unpackedIve(packed) == plain);
    EXPECT_EQ(outcomeOf(packed), "looked at");
    EXPECT_FALSE(unpackedIve(packed.substr(0, packed.size() / 2)));
    EXPECT_FALSE(unpackedIve(packed.substr(0, 16)));
    EXPECT_EQ(outcomeOf(packed.substr(0, packed.size() / 2)), "refused");
}

TEST_F(IveLookTest, SmallFileThatUnpacksToFarMoreIsRefused) {
    const std::string good = packedFile(std::size_t(1) << 20);
    EXPECT_TRUE(unpackedIve(good));
    EXPECT_EQ(outcomeOf(good), "looked at");
    const std::string bad = packedFile(std::size_t(300) << 20);
    EXPECT_LT(bad.size(), std::size_t(1) << 20);
    EXPECT_FALSE(unpackedIve(bad));
    EXPECT_EQ(outcomeOf(bad), "refused");
}

TEST_F(IveLookTest, BillboardOfMorePositionsThanDrawablesIsRefused) {
    const osg::ref_ptr<osg::Billboard> model = new osg::Billboard;
    model->addDrawable(makeQuad(), markedPlace);
    const std::string good = iveFile(*model);
    constexpr std::uint32_t positions = 100'000;
    const std::string place = bytesOf<float>({mark, -mark, mark});
    std::string many = bytesOf<std::uint32_t>({positions});
    for (std::uint32_t i = 0; i < positions; ++i)
        many += place;
    expectRefused(good, replaced(good, bytesOf<std::uint32_t>({1}) + place, many));
}

TEST_F(IveLookTest, HeightFieldOfAnotherAreaThanItsHeightsIsRefused) {
    const std::string good = heightFieldOf(7, 11);
    EXPECT_EQ(outcomeOf(good), "looked at");
    expectRefused(good, heightFieldOf(65536, 65536, 0));
    expectRefused(good, heightFieldOf(65536, 65537, 65536));
    expectRefused(good, heightFieldOf(2, 2, 1'000'000));
    expectRefused(good, heightFieldOf(11, 8));
    expectRefused(good, heightFieldOf(77, 1));
    expectRefused(good, heightFieldOf(1, 77));
}

TEST_F(IveLookTest, HeightLayerOfAnotherAreaThanItsHeightsIsRefused) {
    const osg::ref_ptr<osg::HeightField> field = new osg::HeightField;
    field->allocate(7, 11);
    field->setOrigin(markedPlace);
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setElevationLayer(new osgTerrain::HeightFieldLayer(field));
    const std::string good = iveFile(*tile);
    const std::string origin = bytesOf<float>({mark, -mark, mark});
    const std::string area = bytesOf<std::uint32_t>({7, 11}) + origin;
    expectRefused(good, replaced(good, area, bytesOf<std::uint32_t>({65536, 65536}) + origin));
    expectRefused(good, replaced(good, area, bytesOf<std::uint32_t>({7, 12}) + origin));
    expectRefused(good, replaced(good, area, bytesOf<std::uint32_t>({77, 1}) + origin));
}

TEST_F(IveLookTest, HeightLayerOfOneHeightIsNoLargerThanAModelMayBe) {
    const osg::ref_ptr<osg::HeightField> field = new osg::HeightField;
    field->allocate(7, 11);
    const osg::ref_ptr<osgTerrain::TerrainTile> tile = new osgTerrain::TerrainTile;
    tile->setElevationLayer(new osgTerrain::HeightFieldLayer(field));
    const std::string small = iveFile(*tile);
    // A field of any size takes as few bytes.
    const auto ofSide = [&](std::uint32_t side) {
        return replaced(
            replaced(small, bytesOf<std::uint32_t>({7, 11}), bytesOf<std::uint32_t>({side, side})),
            bytesOf<std::uint32_t>({7 * 11}), bytesOf<std::uint32_t>({side * side}));
    };
    EXPECT_TRUE(isFine(ofSide(2048)));
    EXPECT_FALSE(isFine(ofSide(2049)));
}

TEST_F(IveLookTest, ShapesAreReadToTheirEnds) {
    const std::pair<std::uint32_t, std::vector<float>> shapes[] = {
        {0x2001, {0, 0, 0, 1}},
        {0x2002, {0, 0, 0, 1, 1, 1, 0, 0, 0, 1}},
        {0x2004, {0, 0, 0, 1, 1, 0, 0, 0, 1}},
        {0x2005, {0, 0, 0, 1, 1, 0, 0, 0, 1}},
        {0x2006, {0, 0, 0, 1, 1, 0, 0, 0, 1}}};
    for (const auto& [tag, numbers] : shapes) {
        const std::string bytes = shapeFile(tag, bytesOf(numbers));
        EXPECT_TRUE(isFine(bytes)) << tag;
        EXPECT_FALSE(isFine(bytes.substr(0, bytes.size() - 1))) << tag;
        EXPECT_EQ(outcomeOf(bytes), "looked at") << tag;
    }
}

TEST_F(IveLookTest, ImageInTheFileByTheNameOfAModelIsRefused) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    const osg::ref_ptr<osg::Image> image = makeImage({1, 2, 3, 4});
    image->setFileName("picture.png");
    ASSERT_TRUE(osgDB::writeImageFile(*image, "picture.png"));
    addTexture(*model->getOrCreateStateSet(), image);
    const std::string good = iveFile(*model, "includeImageFileInIVEFile");
    const auto called = [&](const std::string& name) {
        return replaced(good, bytesOf<std::uint32_t>({11}) + "picture.png",
                        bytesOf<std::uint32_t>({static_cast<std::uint32_t>(name.size())}) + name);
    };
    EXPECT_TRUE(isFine(called("picture.png")));
    for (const char* name : {"picture.ive", "picture.osg", "picture", "picture.gz", "a.b/png"})
        expectRefused(called("picture.png"), called(name));
}

TEST_F(IveLookTest, LinkOfMoreChildrenThanNamesIsRefused) {
    const osg::ref_ptr<osg::ProxyNode> model = new osg::ProxyNode;
    model->setFileName(0, "name of a file");
    const std::string good = iveFile(*model);
    const std::string group = groupFile(45, false).substr(12);
    const std::string names = bytesOf<std::uint32_t>({1, 18}) + "name of a file.ive";
    const std::string bad = replaced(good, names, bytesOf<std::uint32_t>({0, 1}) + group);
    expectRefused(good, bad);
}

TEST_F(IveLookTest, LabelWithoutTextIsRefused) {
    const osg::ref_ptr<osg::Geode> model = new osg::Geode;
    const osg::ref_ptr<osgText::Text> label = new osgText::Text;
    label->setText(osgText::String("\xe6\xb5\x8b\xe9\x87\x8f", osgText::String::ENCODING_UTF8));
    model->addDrawable(label);
    const std::string good = iveFile(*model);
    const std::string letters = bytesOf<std::uint32_t>({2, 0x6d4b, 0x91cf});
    expectRefused(good, replaced(good, letters, bytesOf<std::uint32_t>({0})));
}

TEST_F(IveLookTest, LabelOfAbsurdDetailIsRefused) {
    const osg::ref_ptr<osg::Geode> model = new osg::Geode;
    const osg::ref_ptr<osgText::Text> label = new osgText::Text;
    label->setText("label");
    label->setFontResolution(33, 34);
    model->addDrawable(label);
    const std::string good = iveFile(*model);
    EXPECT_TRUE(isFine(good));
    for (const auto& [width, height] : {std::pair(60'000u, 34u), std::pair(33u, 60'000u)})
        EXPECT_FALSE(isFine(replaced(good, bytesOf<std::uint32_t>({33, 34}),
                                     bytesOf<std::uint32_t>({width, height}))));
}

TEST_F(IveLookTest, PatternThatIsTooSmallIsRefused) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    const std::string mask(128, '\x7f');
    model->getOrCreateStateSet()->setAttribute(
        new osg::PolygonStipple(reinterpret_cast<const GLubyte*>(mask.data())));
    const std::string good = iveFile(*model);
    const std::string pattern = bytesOf<std::uint32_t>({128}) + mask;
    expectRefused(good, replaced(good, pattern, bytesOf<std::uint32_t>({0})));
    expectRefused(good, replaced(good, pattern, bytesOf<std::uint32_t>({127}) + mask.substr(1)));
}

TEST_F(IveLookTest, OldUniformThatTheReaderHasNoPlaceForIsRefused) {
    // The group of a file of version 15, with a state that has one uniform.
    const auto file = [](std::uint32_t kind, std::size_t numbers) {
        Bytes uniform;
        for (const std::uint32_t number : {0x5u, 0x1u, 0u})
            uniform.put(number);
        uniform.put('\0').put('\0');
        for (const std::uint32_t number : {0u, 0u, 0u, 0u, 0u, 0u, 1u, 7u, 0x1126u, 0x1u, 0u})
            uniform.put(number);
        uniform.put('\0').put(kind).putBytes(std::string(numbers * sizeof(float), '\0'));
        uniform.put(std::uint32_t(0));
        return groupFile(15, false, '\1' + bytesOf<std::uint32_t>({0}) + uniform.bytes());
    };
    const std::string good = file(osg::Uniform::FLOAT_MAT3, 9);
    expectRefused(good, file(osg::Uniform::FLOAT_MAT2, 9));
    EXPECT_FALSE(isFine(good.substr(0, good.size() - 1)));
}

TEST_F(IveLookTest, UniformOfMoreElementsThanNumbersIsRefused) {
    const osg::ref_ptr<osg::Geode> model = makeQuadGeode();
    model->getOrCreateStateSet()->addUniform(
        new osg::Uniform(osg::Uniform::FLOAT_VEC4, "several", 5));
    const std::string good = iveFile(*model);
    const auto ofElements = [&](std::uint32_t count) {
        return replaced(good, bytesOf<std::uint32_t>({osg::Uniform::FLOAT_VEC4, 5}),
                        bytesOf<std::uint32_t>({osg::Uniform::FLOAT_VEC4, count}));
    };
    expectRefused(ofElements(5), ofElements(21));
}

TEST_F(IveLookTest, CountsBeyondTheFileAreRefused) {
    const osg::ref_ptr<osg::Geode> model = new osg::Geode;
    const osg::ref_ptr<osg::Geometry> geometry = makeQuad();
    const GLuint corners[] = {1, 2, 0};
    geometry->addPrimitiveSet(new osg::DrawElementsUInt(GL_POINTS, 3, corners));
    model->addDrawable(geometry);
    const std::string good = iveFile(*model);
    const std::string indices = bytesOf<std::uint32_t>({3, 1, 2, 0});
    ASSERT_TRUE(isFine(good));
    for (const std::uint32_t wrong : {0xffffffffu, 0x7fffffffu, 0x40000003u, 0x20000003u, 100'000u})
        expectRefused(good, replaced(good, indices, bytesOf<std::uint32_t>({wrong, 1, 2, 0})));
}

TEST_F(IveLookTest, RecordsNestedTooDeeplyAreRefused) {
    const auto nested = [](int depth) {
        const std::string group = groupFile(45, false);
        const std::string head = group.substr(0, 12);
        // All but the number of children, which come behind it.
        const std::string level = group.substr(12, group.size() - 16);
        std::string bytes = head;
        for (int i = 0; i < depth; ++i) {
            const auto name = static_cast<std::uint32_t>(i);
            bytes += bytesOf<std::uint32_t>({name}) + level.substr(4) +
                     bytesOf<std::uint32_t>({i + 1 < depth ? 1u : 0u});
        }
        return bytes;
    };
    EXPECT_TRUE(isFine(nested(400)));
    EXPECT_EQ(outcomeOf(nested(400)), "looked at");
    EXPECT_FALSE(isFine(nested(100'000)));
    EXPECT_EQ(outcomeOf(nested(100'000)), "refused");
}

TEST_F(IveLookTest, FileIsLookedAtWhateverIsWantedOfIt) {
    writeFile("model.ive", heightFieldOf(2, 2, 1'000'000));
    installReadGuard();
    EXPECT_FALSE(osgDB::readRefObjectFile("model.ive"));
    EXPECT_FALSE(osgDB::readRefImageFile("model.ive"));
    EXPECT_FALSE(osgDB::readRefNodeFile("model.ive"));
}

TEST_F(IveLookTest, NoDamageOfAnythingTheLibraryWritesBreaksTheProgram) {
    constexpr std::uint64_t tries = 3;
    for (const IveModel& model : iveModels()) {
        const std::string good = iveFile(*model.node);
        EXPECT_EQ(outcomeOf(good), "looked at") << model.name << readFile("messages");
        for (std::uint64_t seed = 0; seed < tries; ++seed) {
            const std::string outcome = outcomeOf(damagedMeaning(good, seed));
            EXPECT_TRUE(outcome == "looked at" || outcome == "refused")
                << model.name << ", " << seed << ": " << outcome;
        }
    }
}

} // namespace orbisk::test
