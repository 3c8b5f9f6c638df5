#include "readers/PlyReader.h"

#include "support/DrawnModel.h"
#include "support/MeshFiles.h"
#include "support/PackagedReader.h"
#include "support/ReaderTools.h"
#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Texture2D>
#include <osgDB/WriteFile>

#include <algorithm>
#include <limits>
#include <random>
#include <sstream>

namespace orbisk::test {

namespace {

class PlyReaderTest : public testing::Test {
protected:
    static osg::ref_ptr<osg::Node> read(const std::string& bytes) {
        return readBytes<PlyReader>(bytes);
    }

    /// A text file of these elements and lines.
    static std::string text(const std::string& elements, const std::string& body) {
        return "ply\nformat ascii 1.0\n" + elements + "end_header\n" + body;
    }

    static DrawnModel drawn(const std::string& bytes) {
        const osg::ref_ptr<osg::Node> model = read(bytes);
        EXPECT_NE(model, nullptr);
        return model ? drawnModel(*model) : DrawnModel();
    }

    WorkingFolder m_folder;
    QuietLibrary m_quiet;
};

const std::string threeVertices =
    "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n";
const std::string fourVertices =
    "element vertex 4\nproperty float x\nproperty float y\nproperty float z\n";
const std::string oneFace = "element face 1\nproperty list uchar int vertex_indices\n";
const std::string corner = "0 0 0\n1 0 0\n0 1 0\n";
const std::string square = "0 0 0\n1 0 0\n1 1 0\n0 1 0\n";

std::size_t trianglesOf(const DrawnModel& model) {
    return model.triangles.size();
}

/// Random files of what both readers understand, in each of the three formats.
class RandomPly {
public:
    explicit RandomPly(unsigned int seed) : m_random(seed) {}

    std::string make() {
        const int format = between(0, 2);
        m_text = format == 0;
        m_body = Bytes(format == 2);
        m_lines.str("");
        constexpr const char* formats[] = {"ascii", "binary_little_endian", "binary_big_endian"};
        const int vertices = between(4, 40);
        const int faces = between(0, 60);
        std::string header = std::string("ply\nformat ") + formats[format] +
                             " 1.0\ncomment made by a test\nelement vertex " +
                             std::to_string(vertices) + "\n";
        chooseProperties();
        for (const Property& property : m_properties)
            header += "property " + property.type + " " + property.name + "\n";
        for (int i = 0; i < vertices; ++i)
            putVertex();
        const std::string indexType = pick({"int", "uint", "ushort", "uchar", "int32"});
        const std::string countType = pick({"uchar", "int", "uint8", "short"});
        const bool flagged = between(0, 1) == 1;
        header += "element face " + std::to_string(faces) + "\n";
        if (flagged)
            header += "property uchar flag\n";
        header += "property list " + countType + " " + indexType + " " +
                  pick({"vertex_indices", "vertex_index"}) + "\nend_header\n";
        for (int i = 0; i < faces; ++i)
            putFace(i, vertices, countType, indexType, flagged);
        return header + (m_text ? m_lines.str() : m_body.bytes());
    }

private:
    struct Property {
        std::string name;
        std::string type;
    };

    int between(int least, int most) {
        return std::uniform_int_distribution<int>(least, most)(m_random);
    }

    std::string pick(const std::vector<std::string>& words) {
        return words[static_cast<std::size_t>(between(0, static_cast<int>(words.size()) - 1))];
    }

    void add(std::initializer_list<const char*> names, const std::string& type) {
        for (const char* name : names)
            m_properties.push_back({name, type});
    }

    void chooseProperties() {
        m_properties.clear();
        add({"x", "y", "z"}, pick({"float", "double", "float32", "int", "short"}));
        if (between(0, 1) == 1)
            add({"nx", "ny", "nz"}, "float");
        const int look = between(0, 4);
        if (look == 1 || look == 2)
            add({"red", "green", "blue"}, pick({"uchar", "uint8"}));
        if (look == 2)
            add({"alpha"}, "uchar");
        if (look == 3)
            add({"diffuse_red", "diffuse_green", "diffuse_blue"}, "uchar");
        if (look == 4)
            add({"texture_u", "texture_v"}, "float");
        for (int i = between(0, 3); i > 0; --i)
            m_properties.push_back(
                {"other" + std::to_string(i),
                 pick({"char", "uchar", "short", "ushort", "int", "uint", "float", "double"})});
        std::shuffle(m_properties.begin(), m_properties.end(), m_random);
    }

    void putVertex() {
        for (const Property& property : m_properties) {
            const bool isColour = property.type == "uchar" || property.type == "uint8";
            putNumber(property.type, isColour ? between(0, 255) : between(-100, 100) / 8.0);
        }
        m_lines << "\n";
    }

    /// Some faces name a vertex twice, but never all of a kind: then the library leaves them.
    void putFace(int place, int vertices, const std::string& countType,
                 const std::string& indexType, bool flagged) {
        if (flagged)
            putNumber("uchar", between(0, 9));
        const int count = place < 2 ? 3 + place : between(3, 4);
        putNumber(countType, count);
        for (int i = 0; i < count; ++i)
            putNumber(indexType, place < 2 ? i : between(0, vertices - 1));
        m_lines << "\n";
    }

    void putNumber(const std::string& type, double value) {
        if (m_text) {
            const bool whole = type != "float" && type != "double" && type != "float32";
            m_lines << (whole ? static_cast<int>(value) : value) << " ";
        } else if (type == "char") {
            m_body.put(static_cast<std::int8_t>(value));
        } else if (type == "uchar" || type == "uint8") {
            m_body.put(static_cast<std::uint8_t>(static_cast<int>(value)));
        } else if (type == "short") {
            m_body.put(static_cast<std::int16_t>(value));
        } else if (type == "ushort") {
            m_body.put(static_cast<std::uint16_t>(static_cast<int>(value)));
        } else if (type == "int" || type == "int32") {
            m_body.put(static_cast<std::int32_t>(value));
        } else if (type == "uint") {
            m_body.put(static_cast<std::uint32_t>(static_cast<int>(value)));
        } else if (type == "double") {
            m_body.put(value);
        } else {
            m_body.put(static_cast<float>(value));
        }
    }

    std::mt19937 m_random;
    bool m_text = false;
    Bytes m_body;
    std::ostringstream m_lines;
    std::vector<Property> m_properties;
};

} // namespace

TEST_F(PlyReaderTest, RandomFilesAreReadAsByTheLibrary) {
    osgDB::ReaderWriter* packaged = packagedReader("ply", "ReaderWriterPLY");
    ASSERT_NE(packaged, nullptr);
    RandomPly files(3);
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        writeFile("model.ply", files.make());
        const osg::ref_ptr<osg::Node> theirs = packaged->readNode("model.ply", nullptr).getNode();
        const osg::ref_ptr<osg::Node> ours = read(readFile("model.ply"));
        ASSERT_TRUE(ours && theirs);
        ASSERT_EQ(difference(drawnModel(*ours), drawnModel(*theirs)), "");
    }
}

TEST_F(PlyReaderTest, LargeMeshIsReadAsByTheLibrary) {
    constexpr int side = 150;
    std::ostringstream body;
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column)
            body << column << " " << row << " " << (row * column) % 7 << "\n";
    int faces = 0;
    for (int i = 0; i + side + 1 < side * side; ++i)
        if (i % side != side - 1 && ++faces)
            body << "4 " << i << " " << i + 1 << " " << i + side + 1 << " " << i + side << "\n";
    writeFile("model.ply",
              text("element vertex " + std::to_string(side * side) +
                       "\nproperty float x\nproperty float y\nproperty float z\n"
                       "element face " +
                       std::to_string(faces) + "\nproperty list uchar int vertex_indices\n",
                   body.str()));
    osgDB::ReaderWriter* packaged = packagedReader("ply", "ReaderWriterPLY");
    const osg::ref_ptr<osg::Node> theirs = packaged->readNode("model.ply", nullptr).getNode();
    const osg::ref_ptr<osg::Node> ours = read(readFile("model.ply"));
    ASSERT_TRUE(ours && theirs);
    EXPECT_EQ(difference(drawnModel(*ours), drawnModel(*theirs)), "");
}

TEST_F(PlyReaderTest, DoublesThatSinglePrecisionWouldMoveAreKept) {
    const std::string file = text(
        "element vertex 3\nproperty double x\nproperty double y\nproperty double z\n" + oneFace,
        "494000.130 4877000.570 100.2\n494002.130 4877000.570 100.2\n"
        "494002.130 4877003.570 100.2\n3 0 1 2\n");
    const osg::ref_ptr<osg::Node> model = read(file);
    ASSERT_NE(geometryOf(model), nullptr);
    const auto* places = dynamic_cast<const osg::Vec3dArray*>(geometryOf(model)->getVertexArray());
    ASSERT_NE(places, nullptr);
    EXPECT_EQ((*places)[0], osg::Vec3d(494000.130, 4877000.570, 100.2));
    EXPECT_EQ(model->asTransform(), nullptr);
    EXPECT_EQ(drawnModel(*model).triangles[0][0].normal, osg::Vec3d(0, 0, 1));
}

TEST_F(PlyReaderTest, DoublesAtTheOriginAreReadInSinglePrecision) {
    const osg::ref_ptr<osg::Node> model =
        read(text("element vertex 2\nproperty double x\nproperty double y\nproperty double z\n",
                  "0.1 0.2 0.3\n-0.7 0.8 0.9\n"));
    ASSERT_NE(geometryOf(model), nullptr);
    EXPECT_NE(dynamic_cast<const osg::Vec3Array*>(geometryOf(model)->getVertexArray()), nullptr);
}

TEST_F(PlyReaderTest, ElementsAndListsThatAreUnknownAreSkipped) {
    for (const bool big : {false, true}) {
        Bytes body(big);
        body.put(std::uint8_t{2}).put(1.0).put(2.0).put(std::int16_t{5});
        for (const osg::Vec3& place : {osg::Vec3(0, 0, 0), osg::Vec3(1, 0, 0), osg::Vec3(0, 1, 0)})
            body.put(std::uint8_t{1}).put(9.0f).put(place);
        body.put(std::uint8_t{6});
        for (int i = 0; i < 6; ++i)
            body.put(0.5f);
        body.put(std::uint8_t{3}).put(0).put(1).put(2);
        const std::string header =
            std::string("ply\nformat binary_") + (big ? "big" : "little") +
            "_endian 1.0\nelement camera 1\nproperty list uchar double view\nproperty short id\n"
            "element vertex 3\nproperty list uchar float heat\nproperty float x\n"
            "property float y\nproperty float z\nelement face 1\n"
            "property list uchar float texcoord\nproperty list uchar int vertex_indices\n"
            "end_header\n";
        const DrawnModel model = drawn(header + body.bytes());
        ASSERT_EQ(trianglesOf(model), 1u);
        EXPECT_EQ(model.triangles[0][1].place, osg::Vec3d(1, 0, 0));
    }
}

TEST_F(PlyReaderTest, FacesMayComeBeforeTheirVertices) {
    const DrawnModel model = drawn(text(oneFace + threeVertices, "3 0 1 2\n" + corner));
    ASSERT_EQ(trianglesOf(model), 1u);
    EXPECT_EQ(model.triangles[0][2].place, osg::Vec3d(0, 1, 0));
}

TEST_F(PlyReaderTest, PolygonsAreCutIntoTriangles) {
    const DrawnModel model = drawn(
        text("element vertex 6\nproperty float x\nproperty float y\nproperty float z\n" + oneFace,
             "0 2 0\n0 0 0\n3 0 0\n3 1 0\n1 1 0\n1 2 0\n6 0 1 2 3 4 5\n"));
    ASSERT_EQ(trianglesOf(model), 4u);
    double area = 0.0;
    for (const DrawnTriangle& t : model.triangles)
        area += 0.5 * ((t[1].place - t[0].place) ^ (t[2].place - t[0].place)).length();
    EXPECT_DOUBLE_EQ(area, 4.0);
}

TEST_F(PlyReaderTest, TriangleStripsTurnTheSameWayAllAlong) {
    const DrawnModel model =
        drawn(text(fourVertices + "element tristrips 1\nproperty list int int vertex_indices\n",
                   "0 0 0\n1 0 0\n0 1 0\n1 1 0\n8 0 1 2 3 -1 2 1 3\n"));
    ASSERT_EQ(trianglesOf(model), 3u);
    for (const DrawnTriangle& t : model.triangles)
        EXPECT_EQ(((t[1].place - t[0].place) ^ (t[2].place - t[0].place)).z(), 1.0);
}

TEST_F(PlyReaderTest, FlippedFacesAreTurnedBack) {
    const DrawnModel model = drawn(
        text("comment modified by flipply\n" + threeVertices + oneFace, corner + "3 0 1 2\n"));
    ASSERT_EQ(trianglesOf(model), 1u);
    EXPECT_EQ(model.triangles[0][0].place, osg::Vec3d(0, 1, 0));
}

TEST_F(PlyReaderTest, ColoursComeInBytesWordsAndShares) {
    struct Case {
        const char* type;
        const char* values;
    };
    for (const Case& one :
         {Case{"uchar", "255 51 0"}, Case{"ushort", "65535 13107 0"}, Case{"float", "1 0.2 0"},
          Case{"int", "255 51 -7"}, Case{"double", "1e300 0.2 nan"}}) {
        const std::string type = std::string("property ") + one.type;
        const DrawnModel model =
            drawn(text("element vertex 1\nproperty float x\nproperty float y\nproperty float z\n" +
                           type + " red\n" + type + " green\n" + type + " blue\n",
                       std::string("0 0 0 ") + one.values + "\n"));
        ASSERT_EQ(model.points.size(), 1u);
        const bool overflows = std::string(one.type) == "double";
        EXPECT_EQ(model.points[0].colour, osg::Vec4(overflows ? 0.0f : 1.0f, 0.2f, 0.0f, 1.0f))
            << one.type;
    }
}

TEST_F(PlyReaderTest, TextureOfACommentIsFoundBesideTheModel) {
    std::filesystem::create_directory("models");
    ASSERT_TRUE(osgDB::writeImageFile(*makeImage({10, 200, 30, 255}), "models/a picture.png"));
    const osg::ref_ptr<osg::Node> model = readBytes<PlyReader>(
        text("comment TextureFile a picture.png\n" + threeVertices + oneFace, corner + "3 0 1 2\n"),
        "models/model.ply");
    ASSERT_NE(geometryOf(model), nullptr);
    ASSERT_NE(geometryOf(model)->getStateSet(), nullptr);
    EXPECT_NE(
        geometryOf(model)->getStateSet()->getTextureAttribute(0, osg::StateAttribute::TEXTURE),
        nullptr);
}

TEST_F(PlyReaderTest, LinesWithoutAWordAndWordsBehindARowAreNothing) {
    const DrawnModel model =
        drawn(text(threeVertices + oneFace, "0 0 0 99\n\n1 0 0\r\n  \n0 1 0\n3 0 1 2 77\n"));
    EXPECT_EQ(trianglesOf(model), 1u);
}

TEST_F(PlyReaderTest, ListWhoseLengthIsMissingIsEmpty) {
    const DrawnModel model =
        drawn(text(threeVertices + "property list uchar uint vertex_indices\n", corner));
    EXPECT_EQ(model.points.size(), 3u);
}

TEST_F(PlyReaderTest, FacesThatNameMissingVerticesAreLeftOut) {
    const DrawnModel model =
        drawn(text(fourVertices + "element face 6\nproperty list uchar int vertex_indices\n",
                   square + "3 0 1 4\n3 0 1 2\n3 -1 0 1\n4 0 1 2 2000000000\n"
                            "5 0 1 2 3 9\n3 0 1 4294967295\n"));
    ASSERT_EQ(trianglesOf(model), 1u);
    EXPECT_EQ(model.triangles[0][2].place, osg::Vec3d(1, 1, 0));
}

TEST_F(PlyReaderTest, VerticesThatAreNotFiniteAreLeftOutWithTheirFaces) {
    const DrawnModel model =
        drawn(text(fourVertices + "element face 2\nproperty list uchar int vertex_indices\n",
                   "nan 0 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n3 1 2 3\n"));
    ASSERT_EQ(trianglesOf(model), 1u);
    EXPECT_EQ(model.triangles[0][1].place, osg::Vec3d(1, 0, 0));
    for (const char* number : {"inf", "-inf", "1e39", "word"}) {
        const DrawnModel cloud =
            drawn(text(threeVertices, std::string("0 0 ") + number + "\n1 2 3\n4 5 6\n"));
        EXPECT_EQ(cloud.points.size(), 2u) << number;
    }
}

TEST_F(PlyReaderTest, FileThatEndsWithinItsFacesShowsThoseThatAreWhole) {
    const DrawnModel model =
        drawn(text(fourVertices + "element face 3\nproperty list uchar int vertex_indices\n",
                   square + "3 0 1 2\n3 0 2"));
    EXPECT_EQ(trianglesOf(model), 1u);
}

TEST_F(PlyReaderTest, FileThatEndsWithinItsVerticesIsRefused) {
    EXPECT_EQ(read(text(fourVertices, corner)), nullptr);
    EXPECT_EQ(read(text(threeVertices, "0 0 0\n1 0 0\n0 1\n")), nullptr);
    EXPECT_EQ(read("ply\nformat binary_little_endian 1.0\n" + threeVertices +
                   "end_header\n"
                   "0123456789"),
              nullptr);
}

TEST_F(PlyReaderTest, AbsurdCountsAreRefusedAtOnce) {
    const std::string coordinates = "property float x\nproperty float y\nproperty float z\n";
    for (const char* count : {"4294967295", "18446744073709551615", "99999999999999999999", "-1"})
        EXPECT_EQ(read(text(std::string("element vertex ") + count + "\n" + coordinates, corner)),
                  nullptr)
            << count;
    const std::string binary = "ply\nformat binary_little_endian 1.0\n" + threeVertices +
                               "element face 4000000000\nproperty list int int vertex_indices\n"
                               "end_header\n" +
                               std::string(36, '\0');
    Bytes huge;
    huge.putBytes(binary).put(std::int32_t{2000000000}).put(0);
    EXPECT_EQ(drawn(huge.bytes()).points.size(), 3u);
}

TEST_F(PlyReaderTest, HeadersThatMakeNoSenseAreRefused) {
    const std::string whole = text(threeVertices, corner);
    ASSERT_NE(read(whole), nullptr);
    const std::vector<std::string> headers = {
        "",
        "ply",
        "ply\n",
        "\n\n\n",
        "plyformat ascii 1.0\n",
        "ply\nformat ascii 1.0\n",
        "ply\nformat\nend_header\n",
        "ply\nformat ebcdic 1.0\n" + threeVertices + "end_header\n" + corner,
        "ply\n" + threeVertices + "end_header\n" + corner,
        "ply\nformat ascii 1.0\nproperty float x\nend_header\n",
        "ply\nformat ascii 1.0\nelement vertex\nend_header\n",
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty quad x\nend_header\n",
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty list\nend_header\n",
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty list uchar int\nend_header\n",
        text("element face 1\nproperty list uchar int vertex_indices\n", "3 0 1 2\n"),
        text("element vertex 3\nproperty float x\nproperty float y\n", "0 0\n1 0\n0 1\n"),
        text("element vertex 1\nproperty list uchar float x\nproperty float y\nproperty float z\n",
             "1 0 0 0\n"),
    };
    for (const std::string& header : headers)
        EXPECT_EQ(read(header), nullptr) << header;
    for (std::size_t size = 0; size < whole.find("end_header"); ++size)
        EXPECT_EQ(read(whole.substr(0, size)), nullptr) << size;
}

TEST_F(PlyReaderTest, NoVerticesAreAnEmptyModel) {
    const DrawnModel model =
        drawn(text("element vertex 0\nproperty float x\nproperty float y\nproperty float z\n", ""));
    EXPECT_TRUE(model.points.empty() && model.triangles.empty());
}

TEST_F(PlyReaderTest, IsFoundByItsExtensionOnly) {
    const osg::ref_ptr<PlyReader> reader = new PlyReader;
    writeFile("model.PLY", text(threeVertices, corner));
    writeFile("model.obj", text(threeVertices, corner));
    EXPECT_TRUE(reader->readNode("model.PLY", nullptr).validNode());
    EXPECT_TRUE(reader->readObject("model.PLY", nullptr).validObject());
    EXPECT_TRUE(reader->readNode("model.obj", nullptr).notHandled());
    EXPECT_TRUE(reader->readNode("missing.ply", nullptr).notFound());
    std::filesystem::create_directory("folder.ply");
    EXPECT_FALSE(reader->readNode("folder.ply", nullptr).validNode());
}

} // namespace orbisk::test
