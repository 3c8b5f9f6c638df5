#include "readers/Materials3ds.h"

#include <osg/BlendFunc>
#include <osg/CullFace>
#include <osg/Material>
#include <osg/Notify>
#include <osg/TexEnv>
#include <osg/TexEnvCombine>
#include <osg/TexGen>
#include <osg/TexMat>
#include <osgDB/FileUtils>
#include <osgDB/ReadFile>

#include <algorithm>
#include <utility>

namespace orbisk {

namespace {

constexpr double mostOfByte = 255.0;
constexpr int channels = 4;

/// What a shininess of 1 is in OpenGL.
constexpr float mostShininess = 128.0f;

/// A picture that covers a surface whole takes the place of its colours. These are what OpenGL has
/// where nobody says anything.
const osg::Vec3 coveredAmbient(0.2f, 0.2f, 0.2f);
const osg::Vec3 coveredDiffuse(0.8f, 0.8f, 0.8f);
const osg::Vec3 coveredSpecular(0.0f, 0.0f, 0.0f);

constexpr osg::StateAttribute::GLModeValue on = osg::StateAttribute::ON;

/// The scale of a picture on its texture unit.
void addScale(osg::StateSet& stateSet, unsigned int unit, const osg::Vec2& scale) {
    if (scale == osg::Vec2(1.0f, 1.0f))
        return;
    const osg::Matrixd matrix = osg::Matrixd::scale(osg::Vec3(scale, 1.0f));
    stateSet.setTextureAttributeAndModes(unit, new osg::TexMat(matrix), on);
}

/// A picture in which red, as far as `share` says, is all four channels; null where it can't be
/// taken apart.
osg::ref_ptr<osg::Image> makeAlpha(const osg::Image& image, double share) {
    if (image.getDataType() != GL_UNSIGNED_BYTE || image.isCompressed())
        return nullptr;
    osg::ref_ptr<osg::Image> alpha = new osg::Image;
    alpha->allocateImage(image.s(), image.t(), 1, GL_RGBA, GL_UNSIGNED_BYTE);
    alpha->setFileName(image.getFileName());
    for (int row = 0; row < image.t(); ++row) {
        for (int column = 0; column < image.s(); ++column) {
            const double value = 1.0 - share + *image.data(column, row) * share;
            const auto byte = static_cast<unsigned char>(std::clamp(value, 0.0, mostOfByte));
            std::fill_n(alpha->data(column, row), channels, byte);
        }
    }
    return alpha;
}

} // namespace

/// What a state set is made of, on the way.
struct Materials3ds::Look {
    explicit Look(const Material3ds& material)
        : alpha(1.0f - material.transparency), ambient(material.ambient), diffuse(material.diffuse),
          specular(material.specular * material.shineStrength) {}

    void addTexture(osg::Texture2D* texture) {
        stateSet->setTextureAttributeAndModes(unit, texture, on);
    }

    void addEnvironment(osg::TexEnvCombine* environment) {
        stateSet->setTextureAttributeAndModes(unit, environment, on);
    }

    osg::ref_ptr<osg::StateSet> stateSet = new osg::StateSet;
    unsigned int unit = 0; ///< the next free one for a texture
    bool isTransparent = false;
    float alpha;
    osg::Vec3 ambient;
    osg::Vec3 diffuse;
    osg::Vec3 specular;
};

Materials3ds::Materials3ds(std::string folder, const osgDB::Options* options)
    : m_folder(std::move(folder)), m_options(options) {}

osg::Texture2D* Materials3ds::textureOf(const TextureMap3ds& map) {
    if (map.name.empty())
        return nullptr;
    const auto found = m_textures.find(map.name);
    if (found != m_textures.end())
        return found->second.get();
    return m_textures.emplace(map.name, makeTexture(map)).first->second.get();
}

osg::ref_ptr<osg::Texture2D> Materials3ds::makeTexture(const TextureMap3ds& map) const {
    std::string file = osgDB::findFileInDirectory(map.name, m_folder, osgDB::CASE_INSENSITIVE);
    if (file.empty())
        file = osgDB::findDataFile(map.name, m_options.get(), osgDB::CASE_INSENSITIVE);
    if (file.empty())
        file = map.name;
    const osg::ref_ptr<osg::Image> image = osgDB::readRefImageFile(file, m_options.get());
    if (!image) {
        OSG_NOTICE << "The picture " << map.name << " can't be read." << std::endl;
        return nullptr;
    }
    if (image->getFileName().empty())
        image->setFileName(file);
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D;
    texture->setImage(image);
    texture->setName(map.name);
    const osg::Texture::WrapMode wrap = map.repeats ? osg::Texture::REPEAT : osg::Texture::CLAMP;
    for (const auto direction : {osg::Texture::WRAP_S, osg::Texture::WRAP_T, osg::Texture::WRAP_R})
        texture->setWrap(direction, wrap);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_NEAREST);
    return texture;
}

void Materials3ds::addDiffuseMap(const TextureMap3ds& map, Look& look) {
    osg::Texture2D* texture = textureOf(map);
    if (!texture)
        return;
    look.isTransparent = map.hasAlpha || texture->getImage()->isImageTranslucent();
    addScale(*look.stateSet, look.unit, map.scale);
    look.addTexture(texture);
    if (map.percent < 1.0f) {
        const osg::ref_ptr<osg::TexEnvCombine> environment = new osg::TexEnvCombine;
        environment->setCombine_RGB(osg::TexEnvCombine::MODULATE);
        environment->setSource0_RGB(osg::TexEnvCombine::TEXTURE);
        environment->setSource1_RGB(osg::TexEnvCombine::PREVIOUS);
        environment->setSource2_RGB(osg::TexEnvCombine::CONSTANT);
        environment->setConstantColor(
            osg::Vec4(map.percent, map.percent, map.percent, map.percent));
        look.addEnvironment(environment);
    } else {
        look.ambient = coveredAmbient;
        look.diffuse = coveredDiffuse;
        look.specular = coveredSpecular;
    }
    ++look.unit;
}

void Materials3ds::addOpacityMap(const TextureMap3ds& map, Look& look) {
    osg::Texture2D* texture = textureOf(map);
    if (!texture)
        return;
    addScale(*look.stateSet, look.unit, map.scale);
    const double share = static_cast<double>(map.percent);
    if (!texture->getImage()->isImageTranslucent() || share < 1.0)
        if (const osg::ref_ptr<osg::Image> alpha = makeAlpha(*texture->getImage(), share))
            texture->setImage(alpha);
    look.isTransparent = true;
    look.addTexture(texture);
    look.stateSet->setTextureAttributeAndModes(look.unit, new osg::TexEnv(osg::TexEnv::MODULATE),
                                               on);
    ++look.unit;
}

void Materials3ds::addReflectionMap(const TextureMap3ds& map, Look& look) {
    osg::Texture2D* texture = textureOf(map);
    if (!texture)
        return;
    look.addTexture(texture);
    const osg::ref_ptr<osg::TexGen> sphere = new osg::TexGen;
    sphere->setMode(osg::TexGen::SPHERE_MAP);
    look.stateSet->setTextureAttributeAndModes(look.unit, sphere, on);
    const osg::ref_ptr<osg::TexEnvCombine> environment = new osg::TexEnvCombine;
    environment->setCombine_RGB(osg::TexEnvCombine::INTERPOLATE);
    environment->setSource0_RGB(osg::TexEnvCombine::TEXTURE);
    environment->setSource1_RGB(osg::TexEnvCombine::PREVIOUS);
    environment->setSource2_RGB(osg::TexEnvCombine::CONSTANT);
    environment->setCombine_Alpha(osg::TexEnvCombine::REPLACE);
    environment->setSource0_Alpha(osg::TexEnvCombine::CONSTANT);
    environment->setOperand0_Alpha(osg::TexEnvCombine::SRC_ALPHA);
    environment->setConstantColor(osg::Vec4(map.percent, map.percent, map.percent, look.alpha));
    look.addEnvironment(environment);
    ++look.unit;
}

osg::ref_ptr<osg::StateSet> Materials3ds::makeStateSet(const Material3ds& material) {
    Look look(material);
    addDiffuseMap(material.texture, look);
    addOpacityMap(material.opacity, look);
    addReflectionMap(material.reflection, look);

    const osg::ref_ptr<osg::Material> attribute = new osg::Material;
    constexpr auto faces = osg::Material::FRONT_AND_BACK;
    attribute->setName(material.name);
    attribute->setAmbient(faces, osg::Vec4(look.ambient, look.alpha));
    attribute->setDiffuse(faces, osg::Vec4(look.diffuse, look.alpha));
    attribute->setSpecular(faces, osg::Vec4(look.specular, look.alpha));
    attribute->setShininess(faces, material.shininess * mostShininess);
    look.stateSet->setAttribute(attribute);

    if (look.isTransparent || look.alpha < 1.0f) {
        look.stateSet->setAttributeAndModes(
            new osg::BlendFunc(osg::BlendFunc::SRC_ALPHA, osg::BlendFunc::ONE_MINUS_SRC_ALPHA));
        look.stateSet->setMode(GL_BLEND, on);
        look.stateSet->setRenderingHint(osg::StateSet::TRANSPARENT_BIN);
    }
    if (!material.isTwoSided)
        look.stateSet->setAttributeAndModes(new osg::CullFace(osg::CullFace::BACK));
    return look.stateSet;
}

} // namespace orbisk
