#include "writers/ObjMaterials.h"

#include "writers/NumberWriting.h"

#include <osg/Image>

#include <cmath>

namespace orbisk {

namespace {

/// The format's scale of shininess, and that of the graphics library.
constexpr double greatestExponent = 1000.0;
constexpr double greatestShininess = 128.0;

constexpr int lightsWithHighlights = 2; ///< "illum": ambient, diffuse and specular light

template <typename Attribute>
void take(osg::ref_ptr<const Attribute>& place, const osg::StateAttribute* found) {
    if (const auto* attribute = dynamic_cast<const Attribute*>(found))
        place = attribute;
}

const osg::Image* pictureOf(const ObjSurface& surface) {
    const osg::Image* image = surface.texture ? surface.texture->getImage(0) : nullptr;
    return image && !image->getFileName().empty() ? image : nullptr;
}

void writeColour(std::string& out, const char* key, const osg::Vec4& colour) {
    out += key;
    for (unsigned int i = 0; i < 3; ++i)
        appendNumber(out += ' ', colour[i]);
    out += '\n';
}

void writeMaterial(std::string& out, const osg::Material& material) {
    const auto front = osg::Material::FRONT;
    writeColour(out, "Ka", material.getAmbient(front));
    writeColour(out, "Kd", material.getDiffuse(front));
    writeColour(out, "Ks", material.getSpecular(front));
    writeColour(out, "Ke", material.getEmission(front));
    const double shininess = static_cast<double>(material.getShininess(front));
    const long exponent = std::lround(shininess * greatestExponent / greatestShininess);
    out += "Ns " + std::to_string(exponent) + "\n";
    appendNumber(out += "d ", material.getDiffuse(front).a());
    out += "\nillum " + std::to_string(lightsWithHighlights) + "\n";
}

} // namespace

ObjSurface ObjSurface::with(const osg::StateSet* state) const {
    ObjSurface result = *this;
    if (state) {
        take(result.material, state->getAttribute(osg::StateAttribute::MATERIAL));
        take(result.texture, state->getTextureAttribute(0, osg::StateAttribute::TEXTURE));
        take(result.textureMatrix, state->getTextureAttribute(0, osg::StateAttribute::TEXMAT));
    }
    return result;
}

std::string ObjMaterials::nameOf(const ObjSurface& surface) {
    const osg::Image* picture = pictureOf(surface);
    if (!surface.material && !picture)
        return {};
    const auto [place, isNew] =
        m_known.try_emplace({surface.material.get(), picture}, m_surfaces.size());
    if (isNew)
        m_surfaces.emplace_back("material_" + std::to_string(m_surfaces.size() + 1), surface);
    return m_surfaces[place->second].first;
}

void ObjMaterials::write(std::ostream& out) const {
    std::string text;
    for (const auto& [name, surface] : m_surfaces) {
        text += "newmtl " + name + "\n";
        const osg::ref_ptr<const osg::Material> plain = new osg::Material;
        writeMaterial(text, surface.material ? *surface.material : *plain);
        if (const osg::Image* picture = pictureOf(surface))
            text += "map_Kd " + picture->getFileName() + "\n";
        text += '\n';
    }
    out << text;
}

} // namespace orbisk
