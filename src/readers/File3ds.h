#pragma once

#include "readers/Hierarchy3ds.h"

#include <osg/Matrixf>
#include <osg/Vec2>
#include <osg/Vec3>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// A picture that a material of a 3DS file names.
struct TextureMap3ds {
    std::string name; ///< of a file; empty where there is none
    float percent = 1.0f;
    bool repeats = false;
    bool hasAlpha = false;
    osg::Vec2 scale = {1.0f, 1.0f};
    osg::Vec2 offset;
};

/// A material of a 3DS file; as long as the file says nothing, a shiny grey.
struct Material3ds {
    std::string name;
    osg::Vec3 ambient = {0.588235f, 0.588235f, 0.588235f};
    osg::Vec3 diffuse = {0.588235f, 0.588235f, 0.588235f};
    osg::Vec3 specular = {0.898039f, 0.898039f, 0.898039f};
    float shininess = 0.1f;
    float shineStrength = 0.0f;
    float transparency = 0.0f;
    bool isTwoSided = false;
    TextureMap3ds texture;
    TextureMap3ds opacity;
    TextureMap3ds reflection;
};

/// A triangle of a 3DS file.
struct Face3ds {
    std::array<std::uint16_t, 3> corners{}; ///< in the vertices of the mesh, or beyond
    std::optional<std::size_t> material;    ///< in those of the file
    std::uint32_t smoothingGroup = 0;
};

/// A mesh of a 3DS file. Its vertices are in the world frame, as the modeller had them; `matrix` is
/// where it stood.
struct Mesh3ds {
    std::string name;
    osg::Matrixf matrix;
    std::vector<osg::Vec3> vertices;
    std::vector<osg::Vec2> textureCoordinates; ///< as many as vertices, or none
    std::vector<Face3ds> faces;
};

/// What of a 3DS file a model is made of.
struct File3ds {
    std::vector<Material3ds> materials;
    std::vector<Mesh3ds> meshes;
    std::map<std::string, std::size_t> materialOfName; ///< of those of one name, the first
    std::map<std::string, std::size_t> meshOfName;     ///< likewise
    Hierarchy3ds hierarchy;
};

/// Reads the bytes of a 3DS file. Nothing where it isn't one or makes no sense: a chunk is shorter
/// than its own header or than what it counts, a name has no end, the hierarchy has a cycle or is
/// deeper than any modeller makes it.
std::optional<File3ds> parse3ds(std::string_view bytes);

} // namespace orbisk
