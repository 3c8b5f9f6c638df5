#pragma once

#include <osg/Vec4>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orbisk {

/// A picture that a material refers to.
struct MtlMap {
    /// What the picture gives, in the order in which the texture units are dealt out.
    enum class Use {
        Diffuse,
        Opacity,
        Ambient,
        Specular,
        SpecularExponent,
        Bump,
        Displacement,
        Reflection,
    };

    Use use = Use::Diffuse;
    std::string file; ///< as the material names it, with this system's separators
    float scaleU = 1.0f;
    float scaleV = 1.0f;
    float offsetU = 0.0f;
    float offsetV = 0.0f;
    bool clamped = false; ///< transparent beyond the picture, not repeated
};

/// A material as its file describes it; what the file leaves out has the values below. Colours are
/// red, green, blue, opacity.
struct MtlMaterial {
    static constexpr int defaultIllumination = 2;

    osg::Vec4 ambient{0.2f, 0.2f, 0.2f, 1.0f};
    osg::Vec4 diffuse{0.8f, 0.8f, 0.8f, 1.0f};
    osg::Vec4 specular{0.0f, 0.0f, 0.0f, 1.0f};
    osg::Vec4 emissive{0.0f, 0.0f, 0.0f, 1.0f};
    int illumination = defaultIllumination; ///< 0: no shading, 1: without highlights, 2: with them
    std::optional<int> shininess;           ///< 0 to 1000
    std::vector<MtlMap> maps;               ///< at most one for each use: the first
};

using MtlMaterials = std::map<std::string, MtlMaterial, std::less<>>;

/// Adds the materials that the text of a material file describes to `materials`; one of a name
/// that is there already is changed. What can't be understood, numbers that are not finite among
/// it, changes nothing. From any thread.
void readMtl(std::string_view text, MtlMaterials& materials);

} // namespace orbisk
