#include "readers/Reader3ds.h"

#include "support/DrawnModel.h"
#include "support/File3dsMaker.h"
#include "support/PackagedReader.h"
#include "support/ReaderTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Material>
#include <osg/MatrixTransform>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <chrono>
#include <limits>
#include <random>

namespace orbisk::test {

namespace {

const std::vector<osg::Vec3> squarePoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
const std::vector<std::uint16_t> squareFaces = {0, 1, 2, 0, 2, 3};

std::string squareMesh(const std::string& parts = {}) {
    return points3ds(squarePoints) + faces3ds(squareFaces, parts);
}

class Reader3dsTest : public testing::Test {
protected:
    static osg::ref_ptr<osg::Node> read(const std::string& bytes) {
        return readBytes<Reader3ds>(bytes);
    }

    static DrawnModel drawn(const std::string& bytes) {
        const osg::ref_ptr<osg::Node> model = read(bytes);
        EXPECT_NE(model, nullptr);
        return model ? drawnModel(*model) : DrawnModel();
    }

    static void expectAsTheLibrary(const std::string& bytes) {
        writeFile("model.3ds", bytes);
        const osg::ref_ptr<osg::Node> theirs =
            packagedReader("3ds", "3DS Auto Studio Reader/Writer")
                ->readNode("model.3ds", nullptr)
                .getNode();
        const osg::ref_ptr<osg::Node> ours = readBytes<Reader3ds>(bytes, "model.3ds");
        ASSERT_EQ(ours == nullptr, theirs == nullptr);
        if (!ours)
            return;
        EXPECT_EQ(difference(drawnModel(*ours), drawnModel(*theirs)), "");
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

/// Random files: several meshes with materials and smoothing groups in a hierarchy that moves them.
class Random3ds {
public:
    explicit Random3ds(unsigned int seed) : m_random(seed) {}

    std::string make() {
        std::string objects;
        const int materials = between(0, 3);
        for (int i = 0; i < materials; ++i)
            objects += material();
        const int meshes = between(1, 4);
        for (int i = 0; i < meshes; ++i)
            objects += object3ds("mesh" + std::to_string(i), mesh(materials));
        if (between(0, 4) == 0)
            return wholeFile3ds(objects);
        std::string nodes;
        const int count = between(1, 6);
        for (int i = 0; i < count; ++i) {
            const bool isRoot = i == 0 || between(0, 2) == 0;
            const auto parent = static_cast<std::uint16_t>(10 + between(0, std::max(0, i - 1)));
            nodes += node3ds(static_cast<std::uint16_t>(10 + i), isRoot ? noParent3ds : parent,
                             between(0, 5) == 0 ? "$$$DUMMY"
                                                : "mesh" + std::to_string(between(0, meshes)),
                             movement());
        }
        return wholeFile3ds(objects, nodes);
    }

private:
    int between(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }

    float number() { return std::uniform_real_distribution<float>(-5.0f, 5.0f)(m_random); }

    std::uint8_t byte() { return static_cast<std::uint8_t>(between(0, 255)); }

    std::string material() {
        std::string parts = colour3ds(0xA010, byte(), byte(), byte()) +
                            colour3ds(0xA020, byte(), byte(), byte()) +
                            colour3ds(0xA030, byte(), byte(), byte()) +
                            percentage3ds(0xA040, static_cast<std::int16_t>(between(0, 100))) +
                            percentage3ds(0xA041, static_cast<std::int16_t>(between(0, 100))) +
                            percentage3ds(0xA050, static_cast<std::int16_t>(between(0, 1) * 40));
        if (between(0, 1) == 1)
            parts += chunk3ds(0xA081, "");
        return material3ds("material" + std::to_string(m_materials++), parts);
    }

    std::string mesh(int materials) {
        std::vector<osg::Vec3> points;
        const int count = between(3, 20);
        for (int i = 0; i < count; ++i)
            points.emplace_back(number(), number(), number());
        std::vector<std::uint16_t> indices;
        std::vector<std::uint32_t> groups;
        const int faces = between(1, 25);
        for (int i = 0; i < faces; ++i) {
            for (int k = 0; k < 3; ++k)
                indices.push_back(static_cast<std::uint16_t>(between(0, count - 1)));
            groups.push_back(static_cast<std::uint32_t>(between(0, 2)));
        }
        std::string parts = between(0, 1) == 1 ? smoothing3ds(groups) : "";
        for (int i = 0; i < materials; ++i)
            parts += faceMaterial3ds("material" + std::to_string(m_materials - 1 - i),
                                     {static_cast<std::uint16_t>(between(0, faces))});
        std::string mesh = points3ds(points);
        if (between(0, 1) == 1)
            mesh += textureVertices3ds(std::vector<osg::Vec2>(points.size(), {0.25f, number()}));
        if (between(0, 1) == 1)
            mesh += matrix3ds(osg::Matrixf::scale(1.0f, 2.0f, 0.5f) *
                              osg::Matrixf::rotate(number(), osg::Vec3(0, 1, 1)) *
                              osg::Matrixf::translate(number(), number(), number()));
        return mesh + faces3ds(indices, parts);
    }

    std::string movement() {
        std::string parts;
        if (between(0, 1) == 1)
            parts += chunk3ds(0xB013, Bytes().put(osg::Vec3(number(), 0.0f, number())).bytes());
        if (between(0, 2) == 0)
            parts += name3ds(0xB011, "instance");
        if (between(0, 3) > 0)
            parts += track3ds(0xB020, {{0, {number(), number(), number()}},
                                       {10, {number(), number(), number()}}});
        if (between(0, 3) > 0)
            parts += track3ds(0xB021, {{between(0, 1), {number(), number(), number(), number()}}});
        if (between(0, 2) == 0)
            parts += track3ds(0xB022, {{0, {1.5f, number(), 2.0f}}});
        return parts;
    }

    std::mt19937 m_random;
    int m_materials = 0;
};

} // namespace

TEST_F(Reader3dsTest, RandomFilesAreReadAsByTheLibrary) {
    ASSERT_NE(packagedReader("3ds", "3DS Auto Studio Reader/Writer"), nullptr);
    for (unsigned int round = 0; round < 300; ++round) {
        SCOPED_TRACE(round);
        expectAsTheLibrary(Random3ds(round).make());
        if (HasFailure())
            return;
    }
}

TEST_F(Reader3dsTest, MirroredMeshStandsWhereTheLibraryPutsIt) {
    const osg::Matrixf mirrored =
        osg::Matrixf::scale(-1.0f, 1.0f, 1.0f) * osg::Matrixf::translate(3.0f, 4.0f, 5.0f);
    writeFile("model.3ds", wholeFile3ds(object3ds("a", squareMesh() + matrix3ds(mirrored))));
    const osg::ref_ptr<osg::Node> theirs = packagedReader("3ds", "3DS Auto Studio Reader/Writer")
                                               ->readNode("model.3ds", nullptr)
                                               .getNode();
    const DrawnModel expected = drawnModel(*theirs);
    const DrawnModel own = drawn(readFile("model.3ds"));
    ASSERT_EQ(own.triangles.size(), expected.triangles.size());
    for (std::size_t i = 0; i < own.triangles.size(); ++i)
        for (std::size_t k = 0; k < 3; ++k)
            EXPECT_LT((own.triangles[i][k].place - expected.triangles[i][k].place).length(), 1e-5);
}

TEST_F(Reader3dsTest, AnimationIsShownAsAtFrameZero) {
    const std::string turns = track3ds(0xB021, {{-20, {0.5f, 0, 0, 1}}, {-10, {0.25f, 0, 1, 0}}});
    const std::string moves = track3ds(0xB020, {{-20, {9, 9, 9}}, {0, {1, 2, 3}}, {20, {8, 8, 8}}});
    expectAsTheLibrary(
        wholeFile3ds(object3ds("a", squareMesh()), node3ds(0, noParent3ds, "a", turns + moves)));
}

TEST_F(Reader3dsTest, CamerasAndLightsMoveWhatIsBelowThem) {
    const std::string move = track3ds(0xB020, {{0, {1, 2, 3}}});
    const std::string light = node3ds(0, noParent3ds, "lamp", move, 0xB005);
    const std::string ambient = node3ds(2, noParent3ds, "$AMBIENT$", "", 0xB001);
    expectAsTheLibrary(
        wholeFile3ds(object3ds("a", squareMesh()), light + node3ds(1, 0, "a", move) + ambient));
}

TEST_F(Reader3dsTest, PictureIsFoundBesideTheModelInLettersOfAnyCase) {
    ASSERT_TRUE(osgDB::writeImageFile(*makeImage({10, 200, 30, 255}), "PICTURE.png"));
    for (const std::uint16_t use : {0xA200, 0xA210, 0xA220}) {
        for (const std::int16_t percent : {100, 40}) {
            const std::string map =
                chunk3ds(use, chunk3ds(0x0030, Bytes().put(percent).bytes()) +
                                  name3ds(0xA300, "picture.PNG") +
                                  chunk3ds(0xA351, Bytes().put(std::uint16_t{0x40}).bytes()) +
                                  number3ds(0xA354, 2.0f) + number3ds(0xA35A, 0.5f));
            expectAsTheLibrary(
                wholeFile3ds(material3ds("m", map) +
                             object3ds("a", textureVertices3ds({{0, 0}, {1, 0}, {1, 1}, {0, 1}}) +
                                                squareMesh(faceMaterial3ds("m", {0, 1})))));
        }
    }
}

TEST_F(Reader3dsTest, MissingPictureLeavesTheMaterial) {
    const std::string map = chunk3ds(0xA200, name3ds(0xA300, "gone.png"));
    expectAsTheLibrary(wholeFile3ds(material3ds("m", map) +
                                    object3ds("a", squareMesh(faceMaterial3ds("m", {0, 1})))));
}

TEST_F(Reader3dsTest, FacesThatNameMissingVerticesAreLeftOut) {
    const std::string faces = faces3ds({0, 1, 2, 0, 2, 4, 65535, 1, 2});
    EXPECT_EQ(drawn(wholeFile3ds(object3ds("a", points3ds(squarePoints) + faces))).triangles.size(),
              1u);
    EXPECT_EQ(drawn(wholeFile3ds(object3ds("a", faces))).triangles.size(), 0u);
}

TEST_F(Reader3dsTest, FacesThatAreNotFiniteAreLeftOut) {
    for (const float number :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        std::vector<osg::Vec3> points = squarePoints;
        points[3].z() = number;
        const std::string mesh = points3ds(points) + faces3ds(squareFaces);
        EXPECT_EQ(drawn(wholeFile3ds(object3ds("a", mesh))).triangles.size(), 1u);
    }
}

TEST_F(Reader3dsTest, TextureCoordinatesThatAreNotFiniteAreZero) {
    const float inf = std::numeric_limits<float>::infinity();
    const DrawnModel model = drawn(wholeFile3ds(object3ds(
        "a", squareMesh() + textureVertices3ds({{inf, 0}, {1, inf}, {0.5f, 0.5f}, {-inf, inf}}))));
    EXPECT_EQ(model.triangles[0][0].textureCoordinates, osg::Vec2());
    EXPECT_EQ(model.triangles[0][2].textureCoordinates, osg::Vec2(0.5f, 0.5f));
}

TEST_F(Reader3dsTest, MatricesWithoutAnInverseLeaveThingsInTheirPlace) {
    const osg::Matrixf flat = osg::Matrixf::scale(0.0f, 0.0f, 0.0f);
    const std::string nothing = track3ds(0xB022, {{0, {0, 0, 0}}});
    const std::string file =
        wholeFile3ds(object3ds("a", squareMesh() + matrix3ds(flat)),
                     node3ds(0, noParent3ds, "group", nothing) + node3ds(1, 0, "a", nothing));
    EXPECT_EQ(drawn(file).triangles.size(), 2u);
}

TEST_F(Reader3dsTest, NodeWhoseParentIsMissingIsARoot) {
    EXPECT_EQ(
        drawn(wholeFile3ds(object3ds("a", squareMesh()), node3ds(0, 7, "a"))).triangles.size(), 2u);
}

TEST_F(Reader3dsTest, HierarchyInACircleIsRefused) {
    const std::string object = object3ds("a", squareMesh());
    EXPECT_EQ(read(wholeFile3ds(object, node3ds(0, 0, "a"))), nullptr);
    EXPECT_EQ(read(wholeFile3ds(object, node3ds(0, 1, "a") + node3ds(1, 0, "a"))), nullptr);
}

TEST_F(Reader3dsTest, HierarchyDeeperThanAnyModellersIsRefused) {
    const auto chain = [](std::uint16_t depth) {
        std::string nodes = node3ds(0, noParent3ds, "a");
        for (std::uint16_t i = 1; i < depth; ++i)
            nodes += node3ds(i, static_cast<std::uint16_t>(i - 1), "a");
        return wholeFile3ds(object3ds("a", squareMesh()), nodes);
    };
    EXPECT_NE(read(chain(200)), nullptr);
    EXPECT_EQ(read(chain(60'000)), nullptr);
}

TEST_F(Reader3dsTest, SmallFileThatAsksForMoreThanThereIsMemoryIsRefused) {
    const std::vector<std::uint16_t> faces(3 * 65535, 0);
    std::string nodes;
    for (std::uint16_t i = 0; i < 20'000; ++i)
        nodes += node3ds(i, noParent3ds, "a");
    EXPECT_EQ(read(wholeFile3ds(object3ds("a", points3ds(squarePoints) + faces3ds(faces)), nodes)),
              nullptr);
}

TEST_F(Reader3dsTest, SmoothingGroupForEachFaceTakesNoTime) {
    constexpr std::size_t count = 20'000;
    std::vector<std::uint32_t> groups;
    for (std::uint32_t i = 0; i < count; ++i)
        groups.push_back(i);
    const std::vector<osg::Vec3> points(65535, osg::Vec3(1, 2, 3));
    const std::string mesh = points3ds(points) + faces3ds(std::vector<std::uint16_t>(3 * count, 9),
                                                          smoothing3ds(groups));
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE(read(wholeFile3ds(object3ds("a", mesh))), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(Reader3dsTest, ChunkThatIsShorterThanItsHeaderIsRefused) {
    for (const std::uint32_t size : {0u, 5u}) {
        const std::string chunk = Bytes().put(std::uint16_t{0x1234}).put(size).bytes();
        EXPECT_EQ(read(wholeFile3ds(chunk + object3ds("a", squareMesh()))), nullptr);
        EXPECT_EQ(read(Bytes().put(std::uint16_t{0x4D4D}).put(size).bytes()), nullptr);
    }
}

TEST_F(Reader3dsTest, ChunkThatReachesBeyondItsFileEndsWithIt) {
    std::string file = wholeFile3ds(object3ds("a", squareMesh()));
    for (const std::size_t header : {0u, 6u, 12u}) {
        const std::uint32_t huge = 0xFFFFFFF0;
        std::memcpy(&file[header + 2], &huge, sizeof huge);
        EXPECT_EQ(drawn(file).triangles.size(), 2u) << header;
    }
}

TEST_F(Reader3dsTest, CountsBeyondTheirChunkAreRefused) {
    const std::string few = Bytes().put(std::uint16_t{60'000}).put(1.0f).bytes();
    for (const std::uint16_t kind : {0x4110, 0x4120, 0x4140})
        EXPECT_EQ(read(wholeFile3ds(object3ds("a", squareMesh() + chunk3ds(kind, few)))), nullptr);
    for (const std::string& part : {chunk3ds(0x4150, "1234"), chunk3ds(0x4130, "m")})
        EXPECT_EQ(read(wholeFile3ds(object3ds("a", squareMesh(part)))), nullptr);
    const std::string track = chunk3ds(
        0xB020,
        Bytes().put(std::uint16_t{0}).put(std::uint64_t{0}).put(std::uint32_t{0x7FFFFFFF}).bytes());
    EXPECT_EQ(read(wholeFile3ds(object3ds("a", squareMesh()), node3ds(0, noParent3ds, "a", track))),
              nullptr);
}

TEST_F(Reader3dsTest, NameWithoutAnEndIsRefused) {
    const std::string name(100, 'n');
    EXPECT_EQ(read(wholeFile3ds(material3ds(name))), nullptr);
    EXPECT_EQ(read(wholeFile3ds(chunk3ds(0x4000, "ab"))), nullptr);
}

TEST_F(Reader3dsTest, CutFilesAreSafe) {
    const std::string whole =
        wholeFile3ds(material3ds("m") + object3ds("a", squareMesh(faceMaterial3ds("m", {0}))),
                     node3ds(0, noParent3ds, "a"));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const osg::ref_ptr<osg::Node> model = read(whole.substr(0, size));
        EXPECT_TRUE(!model || isSafe(*model)) << size;
    }
}

TEST_F(Reader3dsTest, OtherFilesAreRefused) {
    EXPECT_EQ(read(""), nullptr);
    EXPECT_EQ(read("#Ascii Scene\nFileVersion 2\n"), nullptr);
    EXPECT_EQ(read(chunk3ds(0x1234, squareMesh())), nullptr);
}

} // namespace orbisk::test
