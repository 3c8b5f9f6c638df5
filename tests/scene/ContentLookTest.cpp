#include "readers/ColladaLook.h"
#include "readers/InventorLook.h"
#include "readers/OldTextLook.h"
#include "readers/XmlSceneLook.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <zlib.h>

namespace orbisk::test {

namespace {

class ContentLookTest : public testing::Test {
protected:
    static bool isOldTextFine(const std::string& text) {
        writeFile("model.osg", text);
        return !oldTextRefusal("model.osg");
    }

    static bool isColladaFine(const std::string& nodes, const std::string& head = "") {
        writeFile("model.dae",
                  "<?xml version=\"1.0\"?>" + head + "<COLLADA>" + nodes + "</COLLADA>");
        return !colladaRefusal("model.dae");
    }

    static bool isInventorFine(const std::string& text) {
        writeFile("model.wrl", text);
        return !inventorRefusal("model.wrl");
    }

    WorkingFolder m_folder;
};

std::string faces(const std::string& indices, const std::string& more = "") {
    return "#VRML V2.0 utf8\nShape { geometry IndexedFaceSet { coord Coordinate { point [ 0 0 0, "
           "1 0 0, 0 1 0 ] } " +
           more + " coordIndex [ " + indices + " ] } }\n";
}

const std::string points = "Coordinate3 { point [ 0 0 0, 1 0 0, 0 1 0 ] } ";

} // namespace

TEST_F(ContentLookTest, OldTextWithListsThatFitIsFine) {
    EXPECT_TRUE(isOldTextFine("Geometry {\n  VertexArray Vec3Array 3 {\n 0 0 0\n }\n}\n"));
    EXPECT_TRUE(isOldTextFine("DrawElementsUInt TRIANGLES 3 {\n 0 1 2\n }\n"));
    EXPECT_TRUE(isOldTextFine(""));
}

TEST_F(ContentLookTest, OldTextListLongerThanTheFileIsRefused) {
    EXPECT_FALSE(isOldTextFine("VertexArray Vec3Array 3000 {\n 0 0 0\n }\n"));
    EXPECT_FALSE(isOldTextFine("VertexArray Vec3Array 4000000000 {\n 0 0 0\n }\n"));
}

TEST_F(ContentLookTest, OldTextPrimitivesOfWordsAreRefused) {
    for (const char* name : {"DrawElementsUByte", "DrawElementsUShort", "DrawElementsUInt"})
        EXPECT_FALSE(isOldTextFine(std::string(name) + " TRIANGLES 3 {\n 0 1^ 2\n }\n")) << name;
    EXPECT_FALSE(isOldTextFine("DrawElementsUInt TRIANGLES 3 {\n 0 1 2\n"));
    EXPECT_FALSE(isOldTextFine("DrawElementsUInt\nTRIANGLES\n1 3\n{\n 0 1^ 2\n }\n"));
    EXPECT_TRUE(isOldTextFine("ShapeDrawable {\n Sphere {\n Radius 1\n }\n}\n"));
    EXPECT_FALSE(isOldTextFine("DrawArrayLengths TRIANGLES 0 2\n{\n 3^ 3\n }\n"));
    EXPECT_TRUE(isOldTextFine("DrawArrayLengths TRIANGLES 0 2\n{\n 3 3\n }\n"));
}

TEST_F(ContentLookTest, XmlSceneNestedTooDeeplyIsRefused) {
    const auto isFine = [](const std::string& text) {
        writeFile("model.osgx", "<?xml version=\"1.0\"?>" + text);
        return !xmlSceneRefusal("model.osgx");
    };
    std::string deep;
    std::string flat;
    for (int i = 0; i < 100'000; ++i) {
        deep += "<osg--Group>";
        flat += "<osg--Group></osg--Group><UniqueID/>";
    }
    EXPECT_TRUE(isFine(flat));
    EXPECT_FALSE(isFine(deep));
}

TEST_F(ContentLookTest, OldTextHeightFieldOfAnotherAreaIsRefused) {
    const auto field = [](const std::string& area, const std::string& heights) {
        return "HeightField {\n  NumColumnsAndRows " + area + "\n  Heights {\n    " + heights +
               "\n  }\n}\n";
    };
    EXPECT_TRUE(isOldTextFine(field("2 3", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("2 3", "0 1 2 3 4")));
    EXPECT_FALSE(isOldTextFine(field("2 3", "0 1 2 3 4 5 6")));
    EXPECT_FALSE(isOldTextFine(field("1 6", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("65536 65536", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("-2 -3", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("2.0 3", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("2 3.0", "0 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine(field("2 3", "{ 0 1 2 3 4 } 5")));
    EXPECT_FALSE(isOldTextFine(field("2 3", "{ 0 1 2 3 4 } 5 6 7 8")));
    EXPECT_FALSE(isOldTextFine(field("2 3", "0\"\"1 1 2 3 4 5")));
    EXPECT_FALSE(isOldTextFine("HeightField {\n NumColumnsAndRows 2 1\n}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n NumColumnsAndRows 2 2 Heights 9 0 1 2 3\n}\n"));
}

TEST_F(ContentLookTest, OldTextHeightsWithoutAnAreaAreRefused) {
    const std::string area = "NumColumnsAndRows 2 2\n";
    const std::string heights = "Heights {\n 0 1 2 3\n }\n";
    EXPECT_TRUE(isOldTextFine("HeightField {\n" + area + heights + area + heights + "}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n" + heights + "}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n" + heights + area + "}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n" + area + heights + heights + "}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n Other" + area + heights + "}\n"));
    EXPECT_FALSE(isOldTextFine("HeightField {\n" + area + "}\nHeightField {\n" + heights + "}\n"));
}

TEST_F(ContentLookTest, OldTextMatrixOfTooManyNumbersIsRefused) {
    const auto matrix = [](const std::string& name, int numbers, const std::string& first = "") {
        std::string text = name + " {\n" + first;
        for (int i = 0; i < numbers; ++i)
            text += " 1";
        return text + "\n}\n";
    };
    for (const char* name :
         {"Matrix", "PutMatrix", "ProjectionMatrix", "ViewMatrix", "projectorMatrix",
          "MatrixInSkeletonSpace", "InvBindMatrixInSkeletonSpace"}) {
        EXPECT_TRUE(isOldTextFine(matrix(name, 16))) << name;
        EXPECT_FALSE(isOldTextFine(matrix(name, 17))) << name;
        EXPECT_FALSE(isOldTextFine(matrix(name, 2000))) << name;
        // The reader leaves out what is in brackets, and goes on.
        EXPECT_FALSE(isOldTextFine(matrix(name, 2000, "{ }"))) << name;
        EXPECT_FALSE(isOldTextFine(matrix(name, 16, "word { 1 }"))) << name;
        EXPECT_FALSE(isOldTextFine(matrix(name, 2000, "\"}\""))) << name;
    }
    EXPECT_TRUE(isOldTextFine("Locator {\n" + matrix("Transform", 16) + "}\n"));
    EXPECT_FALSE(isOldTextFine("Locator {\n" + matrix("Transform", 17) + "}\n"));
    EXPECT_FALSE(isOldTextFine("osgTerrain::Locator {\n" + matrix("Transform", 17) + "}\n"));
    // A node of the same name has more in it, and so have objects called after their matrix.
    EXPECT_TRUE(isOldTextFine("Group {\n" + matrix("Transform", 17) + "}\n"));
    EXPECT_TRUE(isOldTextFine("ColorMatrix {\n" + matrix("Matrix", 16) + "}\n"));
}

TEST_F(ContentLookTest, OldTextWithoutAllItsBracketsIsRefused) {
    EXPECT_TRUE(isOldTextFine("Group {\n StateSet { GL_LIGHTING ON }\n}\n"));
    for (const char* name :
         {"\"{\"", "\"}\"", "'{'", "\"a\\\"{\"", "\"\\\\\"", "\"'{\"", "'\"}'", "'a' other '{'"})
        EXPECT_TRUE(isOldTextFine(std::string("Group {\n name ") + name + "\n}\n")) << name;
    for (const char* text : {"Group {\n StateSet {\n GL_LIGHTING", "Group {\n}\n}\n",
                             "} StateSet {\n GL_LIGHTING", "Group {\n name \"a }\n"})
        EXPECT_FALSE(isOldTextFine(text)) << text;
}

TEST_F(ContentLookTest, OldTextTimesThatAreNoneAreRefused) {
    const auto sequence = [](const std::string& times) {
        return "Sequence {\n  frameTime {\n" + times + "\n  }\n}\n";
    };
    EXPECT_TRUE(isOldTextFine(sequence("0.5 1\n 2e-1")));
    EXPECT_TRUE(isOldTextFine(sequence("")));
    EXPECT_TRUE(isOldTextFine("Sequence {\n frameTime { 0.5 1.0}\n}\n"));
    for (const char* times : {"0.5 soon 1", "\"0.5\"", "{ 1 }", "nan", "0.5 1}x"})
        EXPECT_FALSE(isOldTextFine(sequence(times))) << times;
    EXPECT_FALSE(isOldTextFine("frameTime {\n 0.5"));
}

TEST_F(ContentLookTest, OldTextShapeOfAbsurdDetailIsRefused) {
    EXPECT_TRUE(isOldTextFine("TessellationHints {\n detailRatio 2.5\n}\n"));
    for (const char* ratio : {"50000", "nan", "-1", "inf"})
        EXPECT_FALSE(isOldTextFine(std::string("detailRatio ") + ratio + "\n")) << ratio;
}

TEST_F(ContentLookTest, OldTextOfOtherLettersIsRefusedOutsideQuotes) {
    EXPECT_TRUE(isOldTextFine("Group {\n name \"Br\xc3\xbc"
                              "cke\"\n}\n"));
    for (const std::string& word : {std::string("textureUnit\0", 12), std::string("a\xfc"),
                                    std::string("a\xc3\xbc"), std::string("a\x1a")})
        EXPECT_FALSE(isOldTextFine("Group {\n " + word + " 1\n}\n")) << word;
}

TEST_F(ContentLookTest, OldTextNamesMayLookLikeNumbersOfTheFormat) {
    for (const char* name :
         {"\"textureUnit -1\"", "'detailRatio 99'", "mytextureUnit", "textureUnits"})
        EXPECT_TRUE(isOldTextFine(std::string("Group {\n name ") + name + " -1\n}\n")) << name;
}

TEST_F(ContentLookTest, OldTextWithAnAbsurdPlaceInAListIsRefused) {
    for (const char* name :
         {"textureUnit", "TextureUnit", "TexCoordArray", "TexCoordIndices", "VertexAttribArray",
          "VertexAttribBinding", "VertexAttribIndices", "VertexAttribNormalize", "ColorLayer",
          "ActiveSwitchSet", "ValueList"}) {
        const auto at = [&](const std::string& place) {
            // The number is taken for a count as well, of no more than there are bytes.
            return "Object {\n " + (name + (" " + place)) + " {\n Inner ON\n }\n}\n" +
                   std::string(300, ' ');
        };
        for (const char* place : {"", "0", "7", "0x7", "255"})
            EXPECT_TRUE(isOldTextFine(at(place))) << name << " " << place;
        for (const char* place : {"256", "18446744073709551615", "-1", "4294967295", "4294967296",
                                  "2000000000", "0xffffffff"})
            EXPECT_FALSE(isOldTextFine(at(place))) << name << " " << place;
    }
}

TEST_F(ContentLookTest, OldTextNestedTooDeeplyIsRefused) {
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "Group {\n";
    EXPECT_FALSE(isOldTextFine(text));
}

TEST_F(ContentLookTest, ColladaWithSharedNodesIsFine) {
    EXPECT_TRUE(isColladaFine("<node id='a'><node id='b'/><instance_node url='#c'/>"
                              "<instance_node url='#c'/></node><node id='c'/>"));
    EXPECT_TRUE(isColladaFine("<node id='a'><node><node/></node><node/></node>"));
}

TEST_F(ContentLookTest, ColladaThatTakesSomethingFromAnotherDocumentIsRefused) {
    for (const char* address : {"other.dae#a", "file:///dev/ptmx#a", "/dev/ptmx#a", "//host/a#b"}) {
        const std::string url = std::string("'") + address + "'/></node>";
        EXPECT_FALSE(isColladaFine("<node id='n'><instance_node url=" + url)) << address;
        EXPECT_FALSE(isColladaFine("<node id='n'><input source=" + url)) << address;
    }
    EXPECT_TRUE(isColladaFine("<node id='n'><instance_node url='#c'/><input source='#d'/></node>"));
}

TEST_F(ContentLookTest, ColladaNodeInsideItselfIsRefused) {
    EXPECT_FALSE(isColladaFine("<node id='a'><instance_node url='#a'/></node>"));
    EXPECT_FALSE(
        isColladaFine("<node id='a'><instance_node url='#b'/></node>"
                      "<node id='b'><node id='c'><instance_node url='#a'/></node></node>"));
    EXPECT_FALSE(isColladaFine("<node id='a'><instance_node url='&#35;a'/></node>"));
}

TEST_F(ContentLookTest, ColladaSourceShorterThanItsAccessorIsRefused) {
    const auto source = [](const std::string& accessor) {
        return "<source><float_array id='a' count='6'>1 2 3\n4 5 6</float_array><technique_common>"
               "<accessor source='#a' " +
               accessor + "/></technique_common></source>";
    };
    EXPECT_TRUE(isColladaFine(source("count='2' stride='3'")));
    EXPECT_TRUE(isColladaFine(source("count='6'")));
    EXPECT_TRUE(isColladaFine(source("count='0' stride='3'")));
    EXPECT_FALSE(isColladaFine(source("count='3' stride='3'")));
    EXPECT_FALSE(isColladaFine(source("count='7'")));
    EXPECT_FALSE(isColladaFine(source("count='-1' stride='1'")));
    EXPECT_FALSE(isColladaFine(source("count='9223372036854775807' stride='3'")));
    EXPECT_FALSE(isColladaFine(source("count='2' stride='0'")));
}

TEST_F(ContentLookTest, ColladaInputFarBehindTheOthersIsRefused) {
    EXPECT_TRUE(isColladaFine("<triangles><input semantic='VERTEX' offset='3'/></triangles>"));
    EXPECT_FALSE(isColladaFine("<triangles><input semantic='VERTEX' offset='65536'/></triangles>"));
}

TEST_F(ContentLookTest, ColladaWithDefinitionsIsRefused) {
    EXPECT_FALSE(isColladaFine("", "<!DOCTYPE COLLADA [<!ENTITY e 'x'>]>"));
    EXPECT_FALSE(isColladaFine("", "<!DOCTYPE COLLADA SYSTEM 'http://host/x.dtd'>"));
}

TEST_F(ContentLookTest, ColladaThatIsNoXmlIsRefused) {
    EXPECT_FALSE(isColladaFine("<node>"));
    EXPECT_FALSE(isColladaFine("<a></b>"));
}

TEST_F(ContentLookTest, InventorIndicesThatFitAreFine) {
    EXPECT_TRUE(isInventorFine(faces("0 1 2 -1")));
    EXPECT_TRUE(isInventorFine(faces("0, 1, 2")));
    EXPECT_TRUE(isInventorFine("#VRML V1.0 ascii\nSeparator { " + points +
                               "IndexedFaceSet { coordIndex [ 0, 1, 2, -1 ] } }\n"));
    EXPECT_TRUE(isInventorFine("not even a scene"));
    EXPECT_TRUE(isInventorFine(""));
}

TEST_F(ContentLookTest, InventorIndicesBeyondThePointsAreRefused) {
    EXPECT_FALSE(isInventorFine(faces("0 1 3 -1")));
    EXPECT_FALSE(isInventorFine(faces("0 1 99999")));
    EXPECT_FALSE(isInventorFine("#VRML V1.0 ascii\nSeparator { " + points +
                                "IndexedFaceSet { coordIndex [ 0, 1, 3, -1 ] } }\n"));
    EXPECT_FALSE(isInventorFine("#VRML V1.0 ascii\nSeparator { Group { " + points +
                                "} IndexedLineSet { coordIndex [ 3 ] } }\n"));
}

TEST_F(ContentLookTest, InventorCompanionsAreLookedAtToo) {
    const std::string normals = "normal Normal { vector [ 0 0 1 ] } normalIndex [ ";
    EXPECT_TRUE(isInventorFine(faces("0 1 2", normals + "0 0 0 ]")));
    EXPECT_FALSE(isInventorFine(faces("0 1 2", normals + "0 0 1 ]")));
}

TEST_F(ContentLookTest, InventorPointsAreThoseInForce) {
    const std::string one = "Coordinate3 { point [ 0 0 0 ] } ";
    EXPECT_TRUE(isInventorFine("Separator { " + points + "Separator { " + one +
                               "} IndexedFaceSet { coordIndex [ 0, 1, 2 ] } }"));
    EXPECT_FALSE(isInventorFine("Separator { " + points + one +
                                "IndexedFaceSet { coordIndex [ 0, 1, 2 ] } }"));
    EXPECT_FALSE(isInventorFine("Separator { DEF few " + one + points +
                                "USE few IndexedFaceSet { coordIndex [ 0, 1, 2 ] } }"));
}

TEST_F(ContentLookTest, InventorCommentsAndTextsAreNoScene) {
    EXPECT_TRUE(isInventorFine("# } coordIndex [ 99 ] {\n" + faces("0 1 2")));
    EXPECT_TRUE(isInventorFine("Info { string \"coordIndex [ 99 ] }}}\" } " + faces("0 1 2")));
}

TEST_F(ContentLookTest, InventorFilesThatIncludeEachOtherAreRefused) {
    EXPECT_FALSE(isInventorFine("Group { children [ Inline { url \"model.wrl\" } ] }"));
    writeFile("other.wrl", "Inline { url [ \"missing.wrl\" \"model.wrl\" ] }");
    EXPECT_FALSE(isInventorFine("Inline { url \"other.wrl\" }"));
    writeFile("other.wrl", faces("0 1 2"));
    EXPECT_TRUE(isInventorFine("Inline { url \"other.wrl\" } Inline { url \"other.wrl\" }"));
    writeFile("other.wrl", faces("0 1 3"));
    EXPECT_FALSE(isInventorFine("Inline { url \"other.wrl\" }"));
}

TEST_F(ContentLookTest, InventorPrototypeInsideItselfIsRefused) {
    EXPECT_TRUE(isInventorFine("PROTO A [ ] { Group { } } A { }"));
    EXPECT_TRUE(isInventorFine("PROTO A [ field SFNode a Box { } ] { Group { } } A { }"));
    EXPECT_TRUE(isInventorFine("PROTO A [ ] { Group { } } PROTO B [ ] { A { } } B { }"));
    EXPECT_FALSE(isInventorFine("PROTO A [ ] { Group { children [ A { } ] } } A { }"));
    EXPECT_FALSE(isInventorFine("PROTO A [ field SFNode a Box { } ] { A { } } A { }"));
    EXPECT_FALSE(isInventorFine("PROTO A [ ] { PROTO B [ ] { A { } } B { } } A { }"));
}

TEST_F(ContentLookTest, InventorPrototypeThatIsInTheFileItselfIsRefused) {
    EXPECT_FALSE(isInventorFine("EXTERNPROTO A [ ] [ \"model.wrl#A\" ] A { }"));
    EXPECT_FALSE(isInventorFine("EXTERNPROTO A [ ] \"model.wrl\" A { }"));
    EXPECT_TRUE(isInventorFine("EXTERNPROTO A [ ] [ \"urn:a\" \"missing.wrl#A\" ] A { }"));
}

TEST_F(ContentLookTest, InventorPrototypeThatPutsIndicesToPointsIsRefused) {
    const std::string shape = "Shape { geometry IndexedFaceSet { coord Coordinate { point ";
    EXPECT_FALSE(isInventorFine("PROTO A [ field MFInt32 i [ ] ] { " + shape +
                                "[ 0 0 0 ] } coordIndex IS i } } }"));
    EXPECT_FALSE(isInventorFine("PROTO A [ field MFVec3f p [ ] ] { " + shape +
                                "IS p } coordIndex [ 0 ] } } }"));
    EXPECT_FALSE(isInventorFine("PROTO A [ field SFNode c NULL ] { Shape { geometry "
                                "IndexedFaceSet { coord IS c coordIndex [ 0 ] } } }"));
}

TEST_F(ContentLookTest, InventorNodeInsideItselfIsRefused) {
    EXPECT_FALSE(isInventorFine("DEF a Group { children [ Group { children [ USE a ] } ] }"));
    EXPECT_TRUE(isInventorFine("DEF a Group { } Group { children [ USE a USE a ] }"));
}

TEST_F(ContentLookTest, InventorIndicesWithoutPointsAreRefused) {
    EXPECT_FALSE(isInventorFine("Shape { geometry IndexedFaceSet { coordIndex [ 0 1 2 ] } }"));
    EXPECT_TRUE(isInventorFine("Shape { geometry IndexedFaceSet { coordIndex [ ] } }"));
    EXPECT_TRUE(isInventorFine("Coordinate3 { point 1 2 3 } IndexedLineSet { coordIndex [ 0 ] }"));
}

TEST_F(ContentLookTest, InventorPointsOfAGroupUsedAgainAreInForce) {
    const std::string named = "DEF few Group { Coordinate3 { point [ 0 0 0 ] } } ";
    EXPECT_FALSE(isInventorFine(named + points + "USE few IndexedLineSet { coordIndex [ 2 ] }"));
    EXPECT_TRUE(isInventorFine(named + points + "IndexedLineSet { coordIndex [ 2 ] }"));
}

TEST_F(ContentLookTest, InventorCountsBeyondThePointsAreRefused) {
    EXPECT_TRUE(isInventorFine(points + "PointSet { numPoints 3 }"));
    EXPECT_TRUE(isInventorFine(points + "PointSet { numPoints -1 startIndex 1 }"));
    EXPECT_FALSE(isInventorFine(points + "PointSet { numPoints 4 }"));
    EXPECT_FALSE(isInventorFine(points + "PointSet { startIndex 1 numPoints 3 }"));
    EXPECT_FALSE(isInventorFine(points + "PointSet { startIndex -1 numPoints 1 }"));
    EXPECT_FALSE(isInventorFine(points + "PointSet { startIndex 99 }"));
    EXPECT_TRUE(isInventorFine(points + "FaceSet { numVertices [ 3 ] }"));
    EXPECT_FALSE(isInventorFine(points + "FaceSet { numVertices [ 3, 3 ] }"));
    EXPECT_FALSE(isInventorFine(points + "LineSet { numVertices 2000000000 }"));
    EXPECT_TRUE(isInventorFine(points + "QuadMesh { verticesPerRow 3 verticesPerColumn 1 }"));
    EXPECT_FALSE(isInventorFine(points + "QuadMesh { verticesPerRow 3 verticesPerColumn 2 }"));
    EXPECT_FALSE(isInventorFine(points + "QuadMesh { verticesPerRow 65536 verticesPerColumn "
                                         "65536 }"));
    EXPECT_FALSE(isInventorFine("PointSet { numPoints 1 }"));
}

TEST_F(ContentLookTest, PackedInventorFilesAreLookedAt) {
    const auto isPackedFine = [](const std::string& text) {
        const gzFile file = gzopen("model.wrl", "wb");
        gzwrite(file, text.data(), static_cast<unsigned int>(text.size()));
        gzclose(file);
        return !inventorRefusal("model.wrl");
    };
    EXPECT_TRUE(isPackedFine(faces("0 1 2 -1")));
    EXPECT_FALSE(isPackedFine(faces("0 1 3 -1")));
    EXPECT_FALSE(isPackedFine(std::string(100'000'000, ' ')));
    EXPECT_FALSE(isInventorFine("BZh91AY"));
}

} // namespace orbisk::test
