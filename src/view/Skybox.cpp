#include "view/Skybox.h"

#include "platform/RunTimePath.h"

#include <osg/Geode>
#include <osg/Image>
#include <osg/Math>
#include <osg/Shape>
#include <osg/ShapeDrawable>
#include <osg/TexGen>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>
#include <osgDB/Registry>

namespace orbisk {

namespace {

constexpr int skyBin = 9; ///< after the opaque scene (0), before the measurements (20)
constexpr float eyeDistances = 10.0f;

struct SkyFace {
    osg::TextureCubeMap::Face face;
    const char* file;
};

/// In the order in which the files are read.
constexpr SkyFace skyFaces[] = {
    {osg::TextureCubeMap::POSITIVE_X, "front.png"}, {osg::TextureCubeMap::NEGATIVE_X, "back.png"},
    {osg::TextureCubeMap::NEGATIVE_Z, "left.png"},  {osg::TextureCubeMap::POSITIVE_Z, "right.png"},
    {osg::TextureCubeMap::NEGATIVE_Y, "up.png"},    {osg::TextureCubeMap::POSITIVE_Y, "down.png"},
};

osg::ref_ptr<osg::Image> readFace(const char* file) {
    const std::string path = runTimePath({"image", "SkyBoxMap", file});
    // The library would tell of a missing file, which is no error here.
    if (!osgDB::fileExists(path))
        return nullptr;
    return osgDB::readRefImageFile(path, osgDB::Registry::instance()->getOptions());
}

osg::ref_ptr<osg::StateSet> buildSkyState() {
    osg::ref_ptr<osg::StateSet> state = new osg::StateSet;
    osg::ref_ptr<osg::TexGen> texGen = new osg::TexGen;
    texGen->setMode(osg::TexGen::OBJECT_LINEAR);
    state->setTextureAttributeAndModes(0, texGen,
                                       osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    state->setTextureAttributeAndModes(0, buildCubeMapTexture(), osg::StateAttribute::ON);
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    state->setRenderBinDetails(skyBin, "RenderBin", osg::StateSet::USE_RENDERBIN_DETAILS);
    return state;
}

} // namespace

void copyPlacement(SkyboxPlacement& target, osg::Camera* camera, const osg::Vec3d& position) {
    target.camera = camera;
    target.position = position;
}

osg::ref_ptr<osg::TextureCubeMap> buildCubeMapTexture() {
    osg::ref_ptr<osg::TextureCubeMap> texture = new osg::TextureCubeMap;
    for (const SkyFace& face : skyFaces)
        texture->setImage(face.face, readFace(face.file));
    texture->setWrap(osg::Texture::WRAP_S, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    texture->setWrap(osg::Texture::WRAP_R, osg::Texture::CLAMP_TO_EDGE);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    return texture;
}

osg::ref_ptr<osg::MatrixTransform> buildSkybox(const SkyboxPlacement& placement) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(new osg::ShapeDrawable(new osg::Sphere(osg::Vec3(), 1.0f)));
    geode->setStateSet(buildSkyState());
    osg::ref_ptr<osg::MatrixTransform> transform = new osg::MatrixTransform;
    transform->setDataVariance(osg::Object::DYNAMIC);
    transform->setUpdateCallback(new TransformCallback(placement));
    transform->addChild(geode);
    return transform;
}

TransformCallback::TransformCallback(const SkyboxPlacement& placement) : m_placement(placement) {}

TransformCallback::~TransformCallback() = default;

void TransformCallback::operator()(osg::Node* node, osg::NodeVisitor* visitor) {
    const osg::Matrixd toWorld = osg::Matrixd::inverse(m_placement.camera->getViewMatrix());
    const osg::Vec3d eye = osg::Vec3d() * toWorld;
    const osg::Vec3f fromPlacement(eye - m_placement.position);
    const double scale = static_cast<double>(eyeDistances * fromPlacement.length());
    auto* transform = static_cast<osg::MatrixTransform*>(node);
    transform->setMatrix(osg::Matrixd::scale(scale, scale, scale) *
                         osg::Matrixd::rotate(-osg::PI_2, osg::Vec3d(1, 0, 0)) *
                         osg::Matrixd::translate(m_placement.position));
    transform->dirtyBound();
    traverse(node, visitor);
}

} // namespace orbisk
