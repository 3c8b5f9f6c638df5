#include "SceneBuilder.h"

#include <osg/Geode>
#include <osg/Material>
#include <osg/Texture2D>
#include <osgDB/Options>
#include <osgDB/WriteFile>

#include <limits>
#include <stdexcept>

namespace samples {

namespace {

// The viewer's light comes from high above, so walls need most of their brightness without it.
constexpr std::array<SurfaceLook, kSurfaceCount> kLooks = {{{"Ground", 0.50, 0.85, 0.0, false},
                                                            {"WallLit", 1.00, 0.50, 0.40, true},
                                                            {"WallSide", 0.90, 0.50, 0.34, true},
                                                            {"WallShade", 0.75, 0.50, 0.26, true},
                                                            {"Roof", 0.60, 0.80, 0.0, true},
                                                            {"Crown", 1.00, 0.60, 0.0, true}}};

osg::ref_ptr<osg::Texture2D> makeTexture(const Canvas& canvas, const std::string& file,
                                         osg::Texture::WrapMode horizontal) {
    constexpr float kAnisotropy = 8.0F;
    osg::ref_ptr<osg::Texture2D> texture = new osg::Texture2D(canvas.image(file).get());
    texture->setWrap(osg::Texture::WRAP_S, horizontal);
    texture->setWrap(osg::Texture::WRAP_T, osg::Texture::CLAMP_TO_EDGE);
    texture->setFilter(osg::Texture::MIN_FILTER, osg::Texture::LINEAR_MIPMAP_LINEAR);
    texture->setFilter(osg::Texture::MAG_FILTER, osg::Texture::LINEAR);
    texture->setMaxAnisotropy(kAnisotropy);
    return texture;
}

osg::Vec4 gray(double level) {
    const auto value = static_cast<float>(level);
    return {value, value, value, 1.0F};
}

template <typename Elements>
osg::ref_ptr<osg::DrawElements> makeElements(const std::vector<std::uint32_t>& indices) {
    osg::ref_ptr<Elements> elements = new Elements(GL_TRIANGLES);
    elements->reserve(indices.size());
    for (const std::uint32_t index : indices) {
        elements->push_back(static_cast<typename Elements::value_type>(index));
    }
    return elements;
}

} // namespace

const SurfaceLook& lookOf(Surface surface) {
    return kLooks[static_cast<std::size_t>(surface)];
}

SurfaceStates::SurfaceStates(const Canvas& ground, const std::string& groundFile,
                             const Canvas& atlas, const std::string& atlasFile) {
    const osg::ref_ptr<osg::Texture2D> groundTexture =
        makeTexture(ground, groundFile, osg::Texture::CLAMP_TO_EDGE);
    const osg::ref_ptr<osg::Texture2D> atlasTexture =
        makeTexture(atlas, atlasFile, osg::Texture::REPEAT);
    for (std::size_t i = 0; i < kSurfaceCount; ++i) {
        const SurfaceLook& look = kLooks[i];
        osg::ref_ptr<osg::Material> material = new osg::Material;
        material->setName(look.name);
        material->setAmbient(osg::Material::FRONT_AND_BACK, gray(look.ambient));
        material->setDiffuse(osg::Material::FRONT_AND_BACK, gray(look.diffuse));
        material->setEmission(osg::Material::FRONT_AND_BACK, gray(look.emission));
        m_states[i] = new osg::StateSet;
        m_states[i]->setAttributeAndModes(material);
        m_states[i]->setTextureAttributeAndModes(0, look.usesAtlas ? atlasTexture.get()
                                                                   : groundTexture.get());
    }
}

osg::ref_ptr<osg::Geometry> toGeometry(const Mesh& mesh, const SurfaceStates& states) {
    osg::ref_ptr<osg::Vec3Array> positions = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec3Array> normals = new osg::Vec3Array;
    osg::ref_ptr<osg::Vec2Array> coordinates = new osg::Vec2Array;
    for (const Vertex& vertex : mesh.vertices) {
        positions->push_back(vertex.position);
        normals->push_back(vertex.normal);
        coordinates->push_back(
            osg::Vec2(static_cast<float>(vertex.uv.x()), static_cast<float>(vertex.uv.y())));
    }
    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setName(lookOf(mesh.surface).name);
    geometry->setVertexArray(positions);
    geometry->setNormalArray(normals, osg::Array::BIND_PER_VERTEX);
    geometry->setTexCoordArray(0, coordinates, osg::Array::BIND_PER_VERTEX);
    const bool isSmall = mesh.vertices.size() <= std::numeric_limits<GLushort>::max();
    geometry->addPrimitiveSet(isSmall ? makeElements<osg::DrawElementsUShort>(mesh.indices)
                                      : makeElements<osg::DrawElementsUInt>(mesh.indices));
    geometry->setUseVertexBufferObjects(true);
    geometry->setStateSet(states.state(mesh.surface));
    return geometry;
}

osg::ref_ptr<osg::Node> toGeode(const MeshSet& set, const SurfaceStates& states,
                                const std::string& name) {
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->setName(name);
    for (const Mesh& mesh : set.meshes()) {
        if (!mesh.indices.empty()) {
            geode->addDrawable(toGeometry(mesh, states));
        }
    }
    return geode;
}

void writeBinary(const osg::Node& node, const std::string& path) {
    osg::ref_ptr<osgDB::Options> options =
        new osgDB::Options("WriteImageHint=UseExternal Compressor=zlib");
    if (!osgDB::writeNodeFile(node, path, options.get())) {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace samples
