#include "readers/ObjOptions.h"

#include "readers/TextWords.h"

#include <array>
#include <string_view>

namespace orbisk {

namespace {

constexpr int textureUnits = 16; ///< of the fixed pipeline

struct Flag {
    std::string_view word;
    bool ObjOptions::*option;
    bool value;
};

constexpr std::array flags{
    Flag{"noRotation", &ObjOptions::turned, false},
    Flag{"noTesselateLargePolygons", &ObjOptions::split, false},
    Flag{"noTriStripPolygons", &ObjOptions::reordered, false},
    Flag{"generateFacetNormals", &ObjOptions::flat, true},
    Flag{"noReverseFaces", &ObjOptions::facingNormals, false},
};

struct UnitWord {
    std::string_view word;
    MtlMap::Use use;
};

constexpr std::array unitWords{
    UnitWord{"DIFFUSE", MtlMap::Use::Diffuse},
    UnitWord{"AMBIENT", MtlMap::Use::Ambient},
    UnitWord{"SPECULAR", MtlMap::Use::Specular},
    UnitWord{"SPECULAR_EXPONENT", MtlMap::Use::SpecularExponent},
    UnitWord{"OPACITY", MtlMap::Use::Opacity},
    UnitWord{"BUMP", MtlMap::Use::Bump},
    UnitWord{"DISPLACEMENT", MtlMap::Use::Displacement},
    UnitWord{"REFLECTION", MtlMap::Use::Reflection},
};

} // namespace

ObjOptions ObjOptions::parse(const std::string& text) {
    ObjOptions options;
    std::string_view rest = text;
    for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest)) {
        const std::size_t equals = word.find('=');
        const std::string_view name = word.substr(0, equals);
        for (const Flag& flag : flags)
            if (flag.word == name)
                options.*flag.option = flag.value;
        std::string_view value = equals < word.size() ? word.substr(equals + 1) : "";
        int number = 0;
        if (!takeInteger(value, number))
            continue;
        if (name == "NsIfNotPresent")
            options.shininess = number;
        for (const UnitWord& unit : unitWords)
            if (unit.word == name && number >= 0 && number < textureUnits)
                options.units.emplace_back(static_cast<unsigned int>(number), unit.use);
    }
    return options;
}

} // namespace orbisk
