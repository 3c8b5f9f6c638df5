#include "readers/MtlFile.h"

#include <gtest/gtest.h>

namespace orbisk::test {

namespace {

MtlMaterials read(std::string_view text) {
    MtlMaterials materials;
    readMtl(text, materials);
    return materials;
}

MtlMap mapOf(const std::string& line) {
    const MtlMaterials materials = read("newmtl m\n" + line);
    const auto& maps = materials.at("m").maps;
    return maps.empty() ? MtlMap{} : maps.front();
}

} // namespace

TEST(MtlFileTest, ReadsColoursInAnyCase) {
    const MtlMaterials materials = read("newmtl  a b \nKa 1 .5 0\nkd .25\nKS 0 1 0 .5\nke 1 1\n");
    ASSERT_EQ(materials.count("a b"), 1u);
    const MtlMaterial& material = materials.at("a b");
    EXPECT_EQ(material.ambient, osg::Vec4(1, .5f, 0, 1));
    EXPECT_EQ(material.diffuse, osg::Vec4(.25f, .8f, .8f, 1));
    EXPECT_EQ(material.specular, osg::Vec4(0, 1, 0, .5f));
    EXPECT_EQ(material.emissive, osg::Vec4(1, 1, 0, 1));
}

TEST(MtlFileTest, LinesBeforeTheFirstMaterialSayNothing) {
    EXPECT_TRUE(read("Kd 1 1 1\nmap_Kd a.png\n").empty());
}

TEST(MtlFileTest, DissolveWinsOverTransparencyWhicheverComesFirst) {
    EXPECT_EQ(read("newmtl m\nd .5\nTr .1\n").at("m").diffuse.a(), .5f);
    EXPECT_EQ(read("newmtl m\nTr .1\nd .5\n").at("m").diffuse.a(), .5f);
    EXPECT_EQ(read("newmtl m\nTr .1\n").at("m").specular.a(), .1f);
}

TEST(MtlFileTest, NumbersThatAreNotFiniteChangeNothing) {
    const MtlMaterial material =
        read("newmtl m\nKd nan 1 inf\nd nan\nmap_Kd -s nan 1 1 a.png\n").at("m");
    EXPECT_EQ(material.diffuse, osg::Vec4(.8f, 1, .8f, 1));
}

TEST(MtlFileTest, PictureNamesMayHaveBlanksAndForeignSeparators) {
    EXPECT_EQ(mapOf("map_Kd fuze uv.jpg").file, "fuze uv.jpg");
    EXPECT_EQ(mapOf("map_Kd .\\a\\b.jpg").file, "./a/b.jpg");
}

TEST(MtlFileTest, OptionsStandBeforeThePictureName) {
    const MtlMap map = mapOf("map_Kd -s 2 3 1 -o .5 .25 0 -clamp on -mm 0 1 -bm 2 my file.png");
    EXPECT_EQ(map.file, "my file.png");
    EXPECT_EQ(map.scaleU, 2.0f);
    EXPECT_EQ(map.scaleV, 3.0f);
    EXPECT_EQ(map.offsetU, .5f);
    EXPECT_EQ(map.offsetV, .25f);
    EXPECT_TRUE(map.clamped);
}

TEST(MtlFileTest, OptionMayHaveFewerNumbersThanItCould) {
    const MtlMap map = mapOf("map_Kd -s 2 1.png");
    EXPECT_EQ(map.file, "1.png");
    EXPECT_EQ(map.scaleU, 2.0f);
    EXPECT_EQ(map.scaleV, 1.0f);
}

TEST(MtlFileTest, FirstPictureOfAUseCounts) {
    const auto maps = read("newmtl m\nmap_Kd a.png\nmap_Kd b.png\nbump c.png\nmap_Bump d.png\n"
                           "map_Ks\n")
                          .at("m")
                          .maps;
    ASSERT_EQ(maps.size(), 2u);
    EXPECT_EQ(maps[0].file, "a.png");
    EXPECT_EQ(maps[1].file, "c.png");
}

} // namespace orbisk::test
