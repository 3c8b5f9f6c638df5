#include "readers/MaterialStates.h"

#include <osg/Material>
#include <osg/TexGen>
#include <osg/TexMat>
#include <osg/Texture2D>
#include <osgDB/ReadFile>

#include <algorithm>
#include <utility>

namespace orbisk {

namespace {

const osg::Vec4 black(0, 0, 0, 1);

bool isBlack(const MtlMaterial& material) {
    return material.ambient == black && material.diffuse == black;
}

/// Some modellers leave all materials black that have a picture.
void brightenIfAllBlack(MtlMaterials& materials) {
    const bool allBlack = std::all_of(materials.begin(), materials.end(),
                                      [](const auto& entry) { return isBlack(entry.second); });
    if (!allBlack)
        return;
    for (auto& [name, material] : materials) {
        material.ambient.set(0.3f, 0.3f, 0.3f, 1.0f);
        material.diffuse.set(1.0f, 1.0f, 1.0f, 1.0f);
    }
}

osg::ref_ptr<osg::Material> makeMaterial(const std::string& name, const MtlMaterial& material,
                                         int shininess) {
    constexpr auto faces = osg::Material::FRONT_AND_BACK;
    constexpr float range = 1000.0f; ///< of the file's shininess
    constexpr float openGlRange = 128.0f;
    osg::ref_ptr<osg::Material> made = new osg::Material;
    made->setName(name);
    made->setAmbient(faces, material.ambient);
    made->setDiffuse(faces, material.diffuse);
    made->setEmission(faces, material.emissive);
    const bool hasHighlights = material.illumination >= MtlMaterial::defaultIllumination;
    made->setSpecular(faces, hasHighlights ? material.specular : black);
    made->setShininess(faces, static_cast<float>(shininess) / range * openGlRange);
    return made;
}

bool isTransparent(const MtlMaterial& material) {
    return material.ambient.a() != 1.0f || material.diffuse.a() != 1.0f ||
           material.specular.a() != 1.0f || material.emissive.a() != 1.0f;
}

void makeTransparent(osg::StateSet& states) {
    states.setMode(GL_BLEND, osg::StateAttribute::ON);
    states.setRenderingHint(osg::StateSet::TRANSPARENT_BIN);
}

osg::ref_ptr<osg::Texture2D> makeTexture(osg::Image* image, bool isClamped) {
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(image);
    if (isClamped)
        texture->setBorderColor(osg::Vec4d(0, 0, 0, 0));
    for (const auto direction : {osg::Texture::WRAP_R, osg::Texture::WRAP_S, osg::Texture::WRAP_T})
        texture->setWrap(direction,
                         isClamped ? osg::Texture::CLAMP_TO_BORDER : osg::Texture::REPEAT);
    return texture;
}

void addTextureMatrix(const MtlMap& map, unsigned int unit, osg::StateSet& states) {
    const osg::Vec3d scale(static_cast<double>(map.scaleU), static_cast<double>(map.scaleV), 1.0);
    const osg::Vec3d offset(static_cast<double>(map.offsetU), static_cast<double>(map.offsetV), 0);
    if (scale == osg::Vec3d(1, 1, 1) && offset == osg::Vec3d())
        return;
    osg::ref_ptr<osg::TexMat> matrix = new osg::TexMat;
    matrix->setMatrix(osg::Matrix::scale(scale) * osg::Matrix::translate(offset));
    states.setTextureAttributeAndModes(unit, matrix, osg::StateAttribute::ON);
}

const MtlMap* mapFor(MtlMap::Use use, const MtlMaterial& material) {
    const auto found = std::find_if(material.maps.begin(), material.maps.end(),
                                    [&](const MtlMap& map) { return map.use == use; });
    return found != material.maps.end() ? &*found : nullptr;
}

} // namespace

MaterialStates::MaterialStates(MtlMaterials materials, const ObjOptions& objOptions,
                               std::string folder, const osgDB::Options* options)
    : m_materials(std::move(materials)), m_objOptions(objOptions), m_folder(std::move(folder)),
      m_options(options) {
    brightenIfAllBlack(m_materials);
}

osg::ref_ptr<osg::StateSet> MaterialStates::stateSet(const std::string& name) {
    const auto material = m_materials.find(name);
    if (material == m_materials.end())
        return nullptr;
    osg::ref_ptr<osg::StateSet>& made = m_stateSets[name];
    if (!made)
        made = makeStateSet(name, material->second);
    return made;
}

osg::ref_ptr<osg::StateSet> MaterialStates::makeStateSet(const std::string& name,
                                                         const MtlMaterial& material) {
    osg::ref_ptr<osg::StateSet> states = new osg::StateSet;
    const bool isShaded = material.illumination != 0;
    if (isShaded)
        states->setAttribute(makeMaterial(
            name, material, material.shininess.value_or(m_objOptions.shininess.value_or(0))));
    for (const auto& [unit, use] : m_objOptions.units)
        if (const MtlMap* map = mapFor(use, material))
            addMap(*map, unit, *states);
    if (m_objOptions.units.empty()) {
        std::vector<MtlMap> maps = material.maps;
        std::sort(maps.begin(), maps.end(),
                  [](const MtlMap& a, const MtlMap& b) { return a.use < b.use; });
        for (unsigned int unit = 0; unit < maps.size(); ++unit)
            addMap(maps[unit], unit, *states);
    }
    if (isShaded && isTransparent(material))
        makeTransparent(*states);
    return states;
}

void MaterialStates::addMap(const MtlMap& map, unsigned int unit, osg::StateSet& states) {
    if (const osg::ref_ptr<osg::Image> picture = image(map.file)) {
        states.setTextureAttributeAndModes(unit, makeTexture(picture, map.clamped),
                                           osg::StateAttribute::ON);
        if (map.use == MtlMap::Use::Reflection) {
            osg::ref_ptr<osg::TexGen> sphere = new osg::TexGen;
            sphere->setMode(osg::TexGen::SPHERE_MAP);
            states.setTextureAttributeAndModes(unit, sphere, osg::StateAttribute::ON);
        }
        if (picture->isImageTranslucent())
            makeTransparent(states);
    }
    addTextureMatrix(map, unit, states);
}

osg::ref_ptr<osg::Image> MaterialStates::image(const std::string& file) {
    const auto [entry, isNew] = m_images.emplace(file, nullptr);
    if (isNew && !m_folder.empty())
        entry->second = osgDB::readRefImageFile(m_folder + '/' + file, m_options.get());
    if (isNew && !entry->second)
        entry->second = osgDB::readRefImageFile(file, m_options.get());
    return entry->second;
}

} // namespace orbisk
