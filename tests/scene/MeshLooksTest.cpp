#include "damage/LookOutcome.h"
#include "readers/Ac3dLook.h"
#include "readers/BinaryMeshLooks.h"
#include "readers/DirectXLook.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace orbisk::test {

namespace {

class MeshLooksTest : public testing::Test {
protected:
    using Look = std::optional<std::string> (*)(const std::string& path);

    static bool isFine(Look look, const std::string& bytes) {
        writeFile("model", bytes);
        return !look("model");
    }

    /// How the program fares with these bytes.
    static std::string outcomeOf(const std::string& name, const std::string& bytes) {
        writeFile(name, bytes);
        return lookAt(ORBISK_LOOK_AT_MODEL, name, "messages").text();
    }

    WorkingFolder m_folder;
};

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

const std::string acHead = "AC3Db\n";

std::string acTriangle(const std::string& vertices = "3", const std::string& surfaces = "1",
                       const std::string& corners = "3") {
    return acHead + "OBJECT world\nkids 1\nOBJECT poly\nname \"a kids 9\"\nnumvert " + vertices +
           "\n0 0 0\n1 0 0\n0 1 0\nnumsurf " + surfaces + "\nSURF 0x20\nmat 0\nrefs " + corners +
           "\n0 0 0\n1 0 0\n2 0 0\nkids 0\n";
}

/// A mesh in text, of which parts may be replaced.
struct DirectXMesh {
    std::string corners = "3;0,1,2;";
    std::string normal = "0;0;1;";
    std::string normalCorners = "3;0,0,0;";
    std::string material = "0";
    std::string color = "1;1;1;1;;";

    std::string text() const {
        return "xof 0303txt 0032\nFrame a {\nMesh m {\n3;\n0;0;0;,\n1;0;0;,\n0;1;0;;\n1;\n" +
               corners + "\nMeshNormals {\n1;\n" + normal + "\n1;\n" + normalCorners +
               "\n}\nMeshMaterialList {\n1;\n1;\n" + material + ";\nMaterial {\n" + color +
               "\n1;\n0;0;0;;\n0;0;0;;\n}\n}\n}\n}\n";
    }
};

std::string bigEndian(std::uint32_t number, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i)
        bytes += static_cast<char>(number >> (8 * i));
    return bytes;
}

std::string chunk(const std::string& tag, const std::string& content, int sizeOfSize = 4) {
    return tag + bigEndian(static_cast<std::uint32_t>(content.size()), sizeOfSize) + content +
           std::string(content.size() % 2, '\0');
}

std::string form(const std::string& kind, const std::string& chunks) {
    return chunk("FORM", kind + chunks);
}

/// An old object of one triangle.
std::string oldLightwave(std::uint32_t lastPoint, std::uint32_t surface) {
    std::string face = bigEndian(3, 2) + bigEndian(0, 2) + bigEndian(1, 2);
    face += bigEndian(lastPoint, 2) + bigEndian(surface, 2);
    return form("LWOB", chunk("PNTS", std::string(36, '\0')) +
                            chunk("SRFS", std::string("a\0", 2)) + chunk("POLS", face));
}

/// The head of an MD2 file with one frame of three vertices and one triangle, and all that follows.
std::string md2(const std::vector<std::pair<std::size_t, std::int32_t>>& changes = {}) {
    constexpr std::int32_t head = 68;
    std::vector<std::int32_t> numbers = {
        0x32504449, 8, 16, 16, 52, 0, 3, 1, 1, 0, 1, head, head, head + 4, head + 16, 0, head + 68};
    for (const auto& [place, number] : changes)
        numbers[place] = number;
    std::string bytes(reinterpret_cast<const char*>(numbers.data()), numbers.size() * 4);
    bytes += std::string(4 + 12, '\0');
    return bytes + std::string(52, '\0');
}

} // namespace

TEST_F(MeshLooksTest, Ac3dCountsThatFitAreFine) {
    EXPECT_TRUE(isFine(ac3dRefusal, acTriangle()));
    EXPECT_EQ(outcomeOf("model.ac", acTriangle()), "looked at");
}

TEST_F(MeshLooksTest, Ac3dCountsBeyondTheFileAreRefused) {
    EXPECT_FALSE(isFine(ac3dRefusal, acTriangle("4000000000")));
    EXPECT_FALSE(isFine(ac3dRefusal, acTriangle("3", "4000000000")));
    EXPECT_FALSE(isFine(ac3dRefusal, acTriangle("3", "1", "4000000000")));
    EXPECT_FALSE(isFine(ac3dRefusal, acTriangle("-3")));
    EXPECT_FALSE(isFine(ac3dRefusal, acHead + "OBJECT world\nkids 4000000000\n"));
    EXPECT_EQ(outcomeOf("model.ac", acHead + "OBJECT world\nkids 4000000000\n"), "refused");
}

TEST_F(MeshLooksTest, Ac3dPartsNestedTooDeeplyAreRefused) {
    EXPECT_TRUE(isFine(ac3dRefusal, acHead + repeated("OBJECT group\nkids 1\n", 100)));
    EXPECT_TRUE(isFine(ac3dRefusal, acHead + repeated("OBJECT group\nkids 0\n", 1000)));
    const std::string deep = acHead + repeated("OBJECT group\nkids 1\n", 100'000);
    EXPECT_FALSE(isFine(ac3dRefusal, deep));
    EXPECT_EQ(outcomeOf("model.ac", deep), "refused");
}

TEST_F(MeshLooksTest, Ac3dFacesThatMeetInThousandsAreRefused) {
    const auto fan = [](int faces) {
        return acHead + "OBJECT poly\nnumvert 3\n0 0 0\n1 0 0\n0 1 0\nnumsurf " +
               std::to_string(faces) + "\n" +
               repeated("SURF 0x30\nmat 0\nrefs 3\n0 0 0\n1 0 0\n2 0 0\n", faces) + "kids 0\n";
    };
    EXPECT_TRUE(isFine(ac3dRefusal, fan(1000)));
    EXPECT_FALSE(isFine(ac3dRefusal, fan(50'000)));
}

TEST_F(MeshLooksTest, DirectXIndicesThatFitAreFine) {
    EXPECT_TRUE(isFine(directXRefusal, DirectXMesh().text()));
    EXPECT_EQ(outcomeOf("model.x", DirectXMesh().text()), "looked at");
}

TEST_F(MeshLooksTest, DirectXIndicesBeyondWhatTheyCountAreRefused) {
    DirectXMesh mesh;
    mesh.corners = "3;0,1,99999999;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    EXPECT_EQ(outcomeOf("model.x", mesh.text()), "refused");
    mesh = {};
    mesh.corners = "3;0,1,-1;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    mesh = {};
    mesh.normalCorners = "3;0,0,1;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    mesh = {};
    mesh.normalCorners = "2;0,0;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    mesh = {};
    mesh.material = "1";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
}

TEST_F(MeshLooksTest, DirectXLinesOfTooFewNumbersAreRefused) {
    DirectXMesh mesh;
    mesh.corners = "4;0,1,2;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    mesh = {};
    mesh.normal = "0;0;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
    mesh = {};
    mesh.color = "1;";
    EXPECT_FALSE(isFine(directXRefusal, mesh.text()));
}

TEST_F(MeshLooksTest, DirectXSectionsNestedTooDeeplyAreRefused) {
    EXPECT_TRUE(isFine(directXRefusal, "xof\n" + repeated("Frame {\n", 100)));
    EXPECT_TRUE(isFine(directXRefusal, "xof\n" + repeated("Frame {\n}\n", 1000)));
    EXPECT_FALSE(isFine(directXRefusal, "xof\n" + repeated("Frame {\n", 100'000)));
}

TEST_F(MeshLooksTest, DirectXMaterialsWithoutAListAreRefused) {
    EXPECT_FALSE(isFine(directXRefusal, "xof\nMesh {\nMeshMaterialList {\n}\n}\n"));
    EXPECT_FALSE(
        isFine(directXRefusal, "xof\nMaterial a {\n}\nMesh {\nMeshMaterialList {\n{ a }\n}\n}\n"));
}

TEST_F(MeshLooksTest, Md2PlacesWithinTheFileAreFine) {
    EXPECT_TRUE(isFine(md2Refusal, md2()));
    EXPECT_EQ(outcomeOf("model.md2", md2()), "looked at");
}

TEST_F(MeshLooksTest, Md2PlacesAndCountsBeyondTheFileAreRefused) {
    for (const std::size_t count : {5, 6, 7, 8, 10})
        for (const std::int32_t wrong : {1'000'000, 2'000'000'000, -1})
            EXPECT_FALSE(isFine(md2Refusal, md2({{count, wrong}}))) << count << " " << wrong;
    for (const std::size_t offset : {12, 13, 14})
        for (const std::int32_t wrong : {1'000'000, 2'000'000'000, -100})
            EXPECT_FALSE(isFine(md2Refusal, md2({{offset, wrong}}))) << offset << " " << wrong;
    EXPECT_FALSE(isFine(md2Refusal, md2({{4, 0}, {10, 1'000'000}})));
    EXPECT_FALSE(isFine(md2Refusal, md2().substr(0, 60)));
    EXPECT_EQ(outcomeOf("model.md2", md2({{14, 2'000'000'000}})), "refused");
}

TEST_F(MeshLooksTest, Md2NormalThatIsNoneIsRefused) {
    std::string bytes = md2();
    bytes.back() = static_cast<char>(161);
    EXPECT_TRUE(isFine(md2Refusal, bytes));
    bytes.back() = static_cast<char>(162);
    EXPECT_FALSE(isFine(md2Refusal, bytes));
}

TEST_F(MeshLooksTest, LightwaveChunksWithinTheFileAreFine) {
    const std::string surface =
        chunk("SURF", std::string("a\0\0\0", 4) + chunk("COLR", std::string(14, '\0'), 2));
    EXPECT_TRUE(isFine(lightwaveRefusal, form("LWO2", surface)));
    EXPECT_TRUE(isFine(lightwaveRefusal, "something else"));
}

TEST_F(MeshLooksTest, LightwaveChunksBeyondTheFileAreRefused) {
    const std::string points = chunk("PNTS", std::string(36, '\0'));
    const std::string whole = form("LWO2", points);
    EXPECT_TRUE(isFine(lightwaveRefusal, whole));
    EXPECT_FALSE(isFine(lightwaveRefusal, whole.substr(0, whole.size() - 2)));
    std::string wrong = whole;
    wrong[16] = 1;
    EXPECT_FALSE(isFine(lightwaveRefusal, wrong));
    EXPECT_FALSE(isFine(lightwaveRefusal, form("LWO2", chunk("PNTS", std::string(35, '\0')))));
    EXPECT_FALSE(isFine(lightwaveRefusal,
                        form("LWO2", chunk("SURF", std::string("a\0\0\0", 4) + "COLR\xff\xff"))));
}

TEST_F(MeshLooksTest, OldLightwaveFacesOfWhatIsNotThereAreRefused) {
    EXPECT_TRUE(isFine(lightwaveRefusal, oldLightwave(2, 1)));
    EXPECT_EQ(outcomeOf("model.lwo", oldLightwave(2, 1)), "looked at");
    EXPECT_FALSE(isFine(lightwaveRefusal, oldLightwave(3, 1)));
    EXPECT_FALSE(isFine(lightwaveRefusal, oldLightwave(2, 0)));
    EXPECT_FALSE(isFine(lightwaveRefusal, oldLightwave(2, 2)));
    EXPECT_EQ(outcomeOf("model.lwo", oldLightwave(2, 60'000)), "refused");
}

} // namespace orbisk::test
