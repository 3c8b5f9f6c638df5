#include "view/ReadRules.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

bool isRead(const std::string& name, ReadKind kind = ReadKind::Model) {
    return !readRefusal(name, kind);
}

} // namespace

TEST(ReadRulesTest, ModelsAreRead) {
    for (const char* name :
         {"model.osg", "model.osgb", "model.osgt", "a folder/model.obj", "model.3ds", "model.dxf",
          "C:\\models\\model.wrl", "model.max", "model.fbx", "model.dae", "MODEL.OBJ", "a.b.c.ply",
          "../model.stl", "/model.ive", "über.lwo"})
        EXPECT_TRUE(isRead(name)) << name;
}

TEST(ReadRulesTest, ImagesAreRead) {
    for (const char* name : {"a.png", "a.jpg", "a.JPEG", "a.tga", "a.tif", "a.dds", "a.rgb"})
        EXPECT_TRUE(isRead(name, ReadKind::Image)) << name;
}

TEST(ReadRulesTest, FontsAndShadersAreReadAsSuchOnly) {
    EXPECT_TRUE(isRead("fonts/arial.ttf", ReadKind::Other));
    EXPECT_FALSE(isRead("fonts/arial.ttf", ReadKind::Image));
    EXPECT_TRUE(isRead("a.vert", ReadKind::Shader));
    EXPECT_FALSE(isRead("a.vert", ReadKind::Model));
    EXPECT_FALSE(isRead("a.osgb", ReadKind::Shader));
}

TEST(ReadRulesTest, ScriptsAreRefusedInEverySpelling) {
    for (const char* name : {"x.lua", "x.LUA", "x.Lua", "x.lua.", "x.lua ", "x.lua.gz", "x.obj.lua",
                             "x.js", "x.v8", "x.py", "ScriptEngine.lua"})
        for (const ReadKind kind :
             {ReadKind::Model, ReadKind::Image, ReadKind::Shader, ReadKind::Other})
            EXPECT_FALSE(isRead(name, kind)) << name;
}

TEST(ReadRulesTest, NamesWithAddressesAreRefused) {
    for (const char* name : {"http://host/a.png", "HTTP://host/a.png", "https://host/a.obj",
                             "ftp://host/a.ive", "file:///etc/a.png", "gopher://host/a.png",
                             "x.obj/http://host/a.png", "http://host/a.png.90,0,0.rot", "a.curl"})
        EXPECT_FALSE(isRead(name, ReadKind::Image)) << name;
}

TEST(ReadRulesTest, ArchivesAreRefusedAndWhatIsInThem) {
    for (const char* name :
         {"a.osga", "a.zip", "a.zae", "a.gz", "a.obj.gz", "a.osgz", "a.ivez", "a.tgz", "a.osgtgz",
          "a.osga/model.osgb", "a.zip/model.osgb", "a.OSGA\\model.osgb", "b/a.zip/c/model.osgb"})
        EXPECT_FALSE(isRead(name)) << name;
}

TEST(ReadRulesTest, NamesThatHoldAnotherNameAreRefused) {
    for (const char* name :
         {"x.lua.90,0,0.rot", "x.obj.1,2,3.trans", "x.obj.2.scale", "x.logo", "x.obj.normals",
          "x.osg.added", "x.obj.shadow", "x.terrain", "x.view", "Geode {}.osgs"})
        EXPECT_FALSE(isRead(name)) << name;
}

TEST(ReadRulesTest, NamesWithoutExtensionAreRefused) {
    for (const char* name : {"", ".", "..", "obj", "folder.obj/", "folder.obj/name", "name."})
        EXPECT_FALSE(isRead(name)) << name;
}

TEST(ReadRulesTest, ZeroBytesAreRefused) {
    EXPECT_FALSE(isRead(std::string("x.lua\0.obj", 10)));
}

TEST(ReadRulesTest, DevicesAndDocumentsAreRefused) {
    for (const char* name : {"0.0.0.0:9000.receiver.osc", "a.resthttp", "a.vnc", "a.pdf", "a.svg",
                             "a.p3d", "a.cfg", "a.vrt", "a.gdal", "a.ogr", "a.mov", "a.avi"})
        EXPECT_FALSE(isRead(name, ReadKind::Other)) << name;
}

TEST(ReadRulesTest, ShareNamesAreKnown) {
    EXPECT_TRUE(isShareName("\\\\server\\share\\a.png"));
    EXPECT_TRUE(isShareName("//server/share/a.png"));
    EXPECT_TRUE(isShareName("\\/server/a.png"));
    EXPECT_FALSE(isShareName("/a.png"));
    EXPECT_FALSE(isShareName("C:\\a.png"));
    EXPECT_FALSE(isShareName("a//b.png"));
    EXPECT_FALSE(isShareName(""));
}

TEST(ReadRulesTest, ReadersOfTheProgramAreLetThrough) {
    EXPECT_FALSE(isRead("a.orbiskrules"));
    allowReading("orbiskrules");
    EXPECT_TRUE(isRead("a.orbiskrules"));
    EXPECT_TRUE(isRead("a.ORBISKRULES"));
}

TEST(ReadRulesTest, PluginsAreAllowedRefusedOrUnknown) {
    EXPECT_EQ(isPluginAllowed("obj"), true);
    EXPECT_EQ(isPluginAllowed("serializers_osg"), true);
    EXPECT_EQ(isPluginAllowed("lua"), false);
    EXPECT_EQ(isPluginAllowed("LUA"), false);
    EXPECT_EQ(isPluginAllowed("nobody knows"), std::nullopt);
    EXPECT_EQ(isPluginAllowed("../obj"), std::nullopt);
}

} // namespace orbisk::test
