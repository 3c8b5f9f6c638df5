#include "readers/MtlFile.h"

#include "readers/TextLines.h"
#include "readers/TextWords.h"

#include <osgDB/FileNameUtils>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace orbisk {

namespace {

/// Takes one finite number that is a whole word off `text`.
std::optional<float> takeNumberWord(std::string_view& text) {
    std::string_view rest = text;
    std::string_view word = takeWord(rest);
    double number = 0.0;
    if (!takeNumber(word, number) || !word.empty() || !std::isfinite(static_cast<float>(number)))
        return std::nullopt;
    text = rest;
    return static_cast<float>(number);
}

std::optional<float> firstNumber(std::string_view text) {
    double number = 0.0;
    if (!takeNumber(text, number) || !std::isfinite(static_cast<float>(number)))
        return std::nullopt;
    return static_cast<float>(number);
}

/// Changes as many components of a colour as the text has numbers.
void readColour(std::string_view text, osg::Vec4& colour) {
    double number = 0.0;
    for (unsigned int i = 0; i < osg::Vec4::num_components && takeNumber(text, number); ++i)
        if (std::isfinite(static_cast<float>(number)))
            colour[i] = static_cast<float>(number);
}

/// An option in front of a picture's name, and what follows it.
struct MapOption {
    std::string_view name;
    int words;   ///< that are not numbers
    int numbers; ///< at most
};

constexpr std::array mapOptions{
    MapOption{"-s", 0, 3},      MapOption{"-o", 0, 3},     MapOption{"-t", 0, 3},
    MapOption{"-mm", 0, 2},     MapOption{"-bm", 0, 1},    MapOption{"-boost", 0, 1},
    MapOption{"-texres", 0, 1}, MapOption{"-clamp", 1, 0}, MapOption{"-blendu", 1, 0},
    MapOption{"-blendv", 1, 0}, MapOption{"-cc", 1, 0},    MapOption{"-imfchan", 1, 0},
    MapOption{"-type", 1, 0},
};

void applyMapOption(const MapOption& option, std::string_view& text, MtlMap& map) {
    std::array<float, 2> pair = option.name == "-s" ? std::array{map.scaleU, map.scaleV}
                                                    : std::array{map.offsetU, map.offsetV};
    for (int i = 0; i < option.numbers; ++i) {
        const std::optional<float> number = takeNumberWord(text);
        if (!number)
            break;
        if (static_cast<std::size_t>(i) < pair.size())
            pair[static_cast<std::size_t>(i)] = *number;
    }
    if (option.name == "-s") {
        map.scaleU = pair[0];
        map.scaleV = pair[1];
    } else if (option.name == "-o") {
        map.offsetU = pair[0];
        map.offsetV = pair[1];
    }
    for (int i = 0; i < option.words; ++i) {
        const std::string_view word = takeWord(text);
        if (option.name == "-clamp")
            map.clamped = word == "on";
    }
}

/// Whatever follows the options is the name, blanks included.
MtlMap readMap(std::string_view text, MtlMap::Use use) {
    MtlMap map;
    map.use = use;
    for (;;) {
        std::string_view rest = text;
        const std::string_view word = takeWord(rest);
        const auto* option =
            std::find_if(mapOptions.begin(), mapOptions.end(),
                         [&](const MapOption& known) { return known.name == word; });
        if (option == mapOptions.end())
            break;
        applyMapOption(*option, rest, map);
        text = rest;
    }
    map.file = osgDB::convertFileNameToNativeStyle(std::string(trimmed(text)));
    return map;
}

struct MapWord {
    std::string_view word;
    MtlMap::Use use;
};

constexpr std::array mapWords{
    MapWord{"map_ka", MtlMap::Use::Ambient},    MapWord{"map_kd", MtlMap::Use::Diffuse},
    MapWord{"map_ks", MtlMap::Use::Specular},   MapWord{"map_opacity", MtlMap::Use::Opacity},
    MapWord{"map_d", MtlMap::Use::Opacity},     MapWord{"map_ns", MtlMap::Use::SpecularExponent},
    MapWord{"bump", MtlMap::Use::Bump},         MapWord{"map_bump", MtlMap::Use::Bump},
    MapWord{"disp", MtlMap::Use::Displacement}, MapWord{"refl", MtlMap::Use::Reflection},
};

void addMap(MtlMap map, std::vector<MtlMap>& maps) {
    const bool isFirst = std::none_of(maps.begin(), maps.end(),
                                      [&](const MtlMap& other) { return other.use == map.use; });
    if (isFirst && !map.file.empty())
        maps.push_back(std::move(map));
}

void setOpacity(float opacity, MtlMaterial& material) {
    for (osg::Vec4* colour :
         {&material.ambient, &material.diffuse, &material.specular, &material.emissive})
        colour->a() = opacity;
}

/// Reads the lines of a file one by one.
class MtlReader {
public:
    explicit MtlReader(MtlMaterials& materials) : m_materials(materials) {}

    void read(std::string_view line) {
        std::string_view rest = line;
        const std::string_view word = takeWord(rest);
        const auto is = [&](std::string_view known) { return isWord(word, known); };
        if (is("newmtl"))
            begin(trimmed(rest));
        else if (m_material)
            change(is, rest);
    }

private:
    void begin(std::string_view name) {
        m_material = &m_materials[std::string(name)];
        m_hasDissolve = false;
    }

    template <class IsWord>
    void change(const IsWord& isWord, std::string_view rest) {
        MtlMaterial& material = *m_material;
        if (isWord("ka"))
            readColour(rest, material.ambient);
        else if (isWord("kd"))
            readColour(rest, material.diffuse);
        else if (isWord("ks"))
            readColour(rest, material.specular);
        else if (isWord("ke"))
            readColour(rest, material.emissive);
        else if (isWord("illum"))
            takeInteger(rest, material.illumination);
        else if (isWord("ns"))
            readShininess(rest);
        else if (isWord("tr") || isWord("d"))
            readOpacity(rest, isWord("d"));
        else
            for (const MapWord& map : mapWords)
                if (isWord(map.word))
                    addMap(readMap(rest, map.use), material.maps);
    }

    void readShininess(std::string_view text) {
        int shininess = 0;
        if (takeInteger(text, shininess))
            m_material->shininess = shininess;
    }

    /// Writers disagree whether a "Tr" of 1 is opaque; a "d" of 1 is with all of them, and wins.
    void readOpacity(std::string_view text, bool isDissolve) {
        const std::optional<float> opacity = firstNumber(text);
        if (!opacity || (m_hasDissolve && !isDissolve))
            return;
        setOpacity(*opacity, *m_material);
        m_hasDissolve = m_hasDissolve || isDissolve;
    }

    MtlMaterials& m_materials;
    MtlMaterial* m_material = nullptr;
    bool m_hasDissolve = false;
};

} // namespace

void readMtl(std::string_view text, MtlMaterials& materials) {
    MtlReader reader(materials);
    for (TextLines lines(text); lines.next();)
        reader.read(lines.line());
}

} // namespace orbisk
