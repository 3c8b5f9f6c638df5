// Any bytes, as an OBJ file and as a material file: what comes of them is looked at as the program
// does, bounds and triangles.

#include "readers/MaterialStates.h"
#include "readers/MtlFile.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"
#include "readers/ObjScene.h"
#include "support/MeshFuzzing.h"

#include <osg/Notify>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    osg::setNotifyLevel(osg::ALWAYS);
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    orbisk::MtlMaterials materials;
    orbisk::readMtl(text, materials);
    for (auto& [name, material] : materials)
        material.maps.clear();
    const auto file = orbisk::readObj(text);
    if (!file)
        return 0;
    for (const char* words : {"", "generateFacetNormals noRotation"}) {
        const orbisk::ObjOptions options = orbisk::ObjOptions::parse(words);
        orbisk::MaterialStates states(materials, options, {}, nullptr);
        const auto scene = orbisk::makeObjScene(*file, options, states);
        if (!scene)
            continue;
        orbisk::fuzz::requireSafe(*scene);
        if (!std::isfinite(scene->getBound().radius()))
            std::abort();
    }
    return 0;
}
