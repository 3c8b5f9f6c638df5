#include "view/Skybox.h"

#include "support/SceneTools.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <osg/Geode>
#include <osg/Shape>
#include <osg/ShapeDrawable>
#include <osg/TexGen>
#include <osg/observer_ptr>
#include <osgDB/Options>
#include <osgDB/ReadFile>
#include <osgDB/Registry>
#include <osgDB/WriteFile>

#include <filesystem>
#include <map>
#include <vector>

namespace orbisk::test {

namespace fs = std::filesystem;

namespace {

struct Face {
    const char* file;
    osg::TextureCubeMap::Face face;
    osg::Vec4ub colour;
};

/// In the order in which the files are to be read.
const std::vector<Face> faces{
    {"front.png", osg::TextureCubeMap::POSITIVE_X, {255, 0, 0, 255}},
    {"back.png", osg::TextureCubeMap::NEGATIVE_X, {0, 255, 0, 255}},
    {"left.png", osg::TextureCubeMap::NEGATIVE_Z, {0, 0, 255, 255}},
    {"right.png", osg::TextureCubeMap::POSITIVE_Z, {255, 255, 0, 255}},
    {"up.png", osg::TextureCubeMap::NEGATIVE_Y, {255, 0, 255, 255}},
    {"down.png", osg::TextureCubeMap::POSITIVE_Y, {0, 255, 255, 255}},
};

const fs::path skyFolder = fs::path("image") / "SkyBoxMap";

void writeFaces() {
    fs::create_directories(skyFolder);
    for (const Face& face : faces)
        ASSERT_TRUE(
            osgDB::writeImageFile(*makeImage(face.colour), (skyFolder / face.file).string()));
}

osg::ref_ptr<osg::MatrixTransform> buildAt(osg::Camera* camera, const osg::Vec3d& position) {
    SkyboxPlacement placement;
    copyPlacement(placement, camera, position);
    return buildSkybox(placement);
}

/// Notes which pictures are asked for with the registry's own options.
class ReadLog : public osgDB::ReadFileCallback {
public:
    osgDB::ReaderWriter::ReadResult readImage(const std::string& file,
                                              const osgDB::Options* options) override {
        files.push_back(file);
        return osgDB::ReadFileCallback::readImage(file, options);
    }

    std::vector<std::string> files;
};

} // namespace

TEST(SkyboxTest, TransformHoldsOneGeodeWithOneUnitSphere) {
    const WorkingFolder folder;
    const osg::ref_ptr<osg::MatrixTransform> sky = buildAt(new osg::Camera, osg::Vec3d(1, 2, 3));
    EXPECT_NE(dynamic_cast<TransformCallback*>(sky->getUpdateCallback()), nullptr);
    ASSERT_EQ(sky->getNumChildren(), 1u);
    const osg::Geode* geode = sky->getChild(0)->asGeode();
    ASSERT_NE(geode, nullptr);
    ASSERT_EQ(geode->getNumDrawables(), 1u);
    const auto* drawable = dynamic_cast<const osg::ShapeDrawable*>(geode->getDrawable(0));
    ASSERT_NE(drawable, nullptr);
    EXPECT_EQ(drawable->getTessellationHints(), nullptr);
    const auto* sphere = dynamic_cast<const osg::Sphere*>(drawable->getShape());
    ASSERT_NE(sphere, nullptr);
    EXPECT_EQ(sphere->getCenter(), osg::Vec3(0, 0, 0));
    EXPECT_EQ(sphere->getRadius(), 1.0f);
}

TEST(SkyboxTest, StateIsUnlitTexturedAndDrawnInBinNine) {
    const WorkingFolder folder;
    const osg::ref_ptr<osg::MatrixTransform> sky = buildAt(new osg::Camera, osg::Vec3d());
    const osg::StateSet* state = sky->getChild(0)->getStateSet();
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->getMode(GL_LIGHTING), osg::StateAttribute::OFF);
    EXPECT_EQ(state->getBinNumber(), 9);
    EXPECT_EQ(state->getBinName(), "RenderBin");
    EXPECT_EQ(state->getRenderBinMode(), osg::StateSet::USE_RENDERBIN_DETAILS);
    EXPECT_EQ(state->getTextureMode(0, GL_TEXTURE_CUBE_MAP), osg::StateAttribute::ON);
    const auto* texture = dynamic_cast<const osg::TextureCubeMap*>(
        state->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
    EXPECT_NE(texture, nullptr);
}

TEST(SkyboxTest, TextureCoordinatesAreThePlacesOnTheSphere) {
    const WorkingFolder folder;
    const osg::ref_ptr<osg::MatrixTransform> sky = buildAt(new osg::Camera, osg::Vec3d());
    const osg::StateSet* state = sky->getChild(0)->getStateSet();
    const osg::StateSet::RefAttributePair* pair =
        state->getTextureAttributePair(0, osg::StateAttribute::TEXGEN);
    ASSERT_NE(pair, nullptr);
    constexpr auto onAndOverride = osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE;
    // Of the value, an attribute keeps what concerns the states below.
    EXPECT_EQ(pair->second, osg::StateAttribute::OVERRIDE);
    EXPECT_EQ(static_cast<const osg::TexGen&>(*pair->first).getMode(), osg::TexGen::OBJECT_LINEAR);
    for (const auto mode : {GL_TEXTURE_GEN_S, GL_TEXTURE_GEN_T, GL_TEXTURE_GEN_R})
        EXPECT_EQ(state->getTextureMode(0, static_cast<osg::StateAttribute::GLMode>(mode)),
                  static_cast<unsigned int>(onAndOverride));
}

TEST(SkyboxTest, EachFileIsOnItsFace) {
    const WorkingFolder folder;
    writeFaces();
    const osg::ref_ptr<osg::TextureCubeMap> texture = buildCubeMapTexture();
    for (const Face& face : faces) {
        const osg::Image* image = texture->getImage(face.face);
        ASSERT_NE(image, nullptr) << face.file;
        EXPECT_EQ(image->s(), 4) << face.file;
        EXPECT_TRUE(hasColour(*image, face.colour)) << face.file;
    }
}

TEST(SkyboxTest, EdgesAreClampedAndPixelsBlended) {
    const WorkingFolder folder;
    const osg::ref_ptr<osg::TextureCubeMap> texture = buildCubeMapTexture();
    for (const auto side : {osg::Texture::WRAP_S, osg::Texture::WRAP_T, osg::Texture::WRAP_R})
        EXPECT_EQ(texture->getWrap(side), osg::Texture::CLAMP_TO_EDGE);
    EXPECT_EQ(texture->getFilter(osg::Texture::MIN_FILTER), osg::Texture::LINEAR_MIPMAP_LINEAR);
    EXPECT_EQ(texture->getFilter(osg::Texture::MAG_FILTER), osg::Texture::LINEAR);
}

TEST(SkyboxTest, FilesAreReadInOrderWithTheRegistrysOptions) {
    const WorkingFolder folder;
    writeFaces();
    const osg::ref_ptr<ReadLog> log = new ReadLog;
    const osg::ref_ptr<osgDB::Options> options = new osgDB::Options;
    options->setReadFileCallback(log);
    const osg::ref_ptr<osgDB::Options> former = osgDB::Registry::instance()->getOptions();
    osgDB::Registry::instance()->setOptions(options);
    buildCubeMapTexture();
    osgDB::Registry::instance()->setOptions(former);
    std::vector<std::string> wanted;
    for (const Face& face : faces)
        wanted.push_back((skyFolder / face.file).string());
    EXPECT_EQ(log->files, wanted);
}

TEST(SkyboxTest, WithoutTheFolderTheFacesAreEmpty) {
    const WorkingFolder folder;
    const QuietLibrary quiet;
    const osg::ref_ptr<osg::TextureCubeMap> texture = buildCubeMapTexture();
    ASSERT_NE(texture, nullptr);
    for (unsigned int face = 0; face < texture->getNumImages(); ++face)
        EXPECT_EQ(texture->getImage(face), nullptr);
    EXPECT_NE(buildAt(new osg::Camera, osg::Vec3d()), nullptr);
}

TEST(SkyboxTest, DamagedFileLeavesOnlyItsFaceEmpty) {
    const WorkingFolder folder;
    const QuietLibrary quiet;
    writeFaces();
    const std::string whole = readFile(skyFolder / "up.png");
    writeFile(skyFolder / "up.png", "no picture at all");
    fs::remove(skyFolder / "left.png");
    const osg::ref_ptr<osg::TextureCubeMap> texture = buildCubeMapTexture();
    for (const Face& face : faces) {
        const std::string file = face.file;
        const bool gone = file == "up.png" || file == "left.png";
        EXPECT_EQ(texture->getImage(face.face) == nullptr, gone) << file;
    }
}

TEST(SkyboxTest, EachSkyHasATextureOfItsOwn) {
    const WorkingFolder folder;
    EXPECT_NE(buildCubeMapTexture(), buildCubeMapTexture());
    const osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    EXPECT_NE(buildAt(camera, osg::Vec3d()), buildAt(camera, osg::Vec3d()));
}

TEST(SkyboxTest, SkyGoesWithItsTransformAndLetsTheCameraGo) {
    const WorkingFolder folder;
    osg::ref_ptr<osg::Camera> camera = new osg::Camera;
    const osg::observer_ptr<osg::Camera> cameraSeen = camera;
    osg::ref_ptr<osg::MatrixTransform> sky = buildAt(camera, osg::Vec3d());
    const osg::observer_ptr<osg::StateSet> stateSeen = sky->getChild(0)->getStateSet();
    camera = nullptr;
    EXPECT_TRUE(cameraSeen.valid());
    sky = nullptr;
    EXPECT_FALSE(cameraSeen.valid());
    EXPECT_FALSE(stateSeen.valid());
}

} // namespace orbisk::test
