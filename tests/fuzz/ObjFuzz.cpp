// Any bytes, as an OBJ file and as a material file: what comes of them is looked at as the program
// does, bounds and triangles.

#include "readers/MaterialStates.h"
#include "readers/MtlFile.h"
#include "readers/ObjFile.h"
#include "readers/ObjOptions.h"
#include "readers/ObjScene.h"

#include <osg/Geode>
#include <osg/Geometry>
#include <osg/Notify>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

void checkGeometry(const osg::Geometry& geometry) {
    const unsigned int count = geometry.getVertexArray()->getNumElements();
    for (const auto& primitives : geometry.getPrimitiveSetList())
        for (unsigned int i = 0; i < primitives->getNumIndices(); ++i)
            require(primitives->index(i) < count);
    for (const osg::Array* array :
         {geometry.getNormalArray(), geometry.getColorArray(), geometry.getTexCoordArray(0)})
        require(!array || array->getNumElements() == count);
}

void checkScene(osg::Group& scene) {
    require(std::isfinite(scene.getBound().radius()));
    for (unsigned int i = 0; i < scene.getNumChildren(); ++i)
        checkGeometry(*scene.getChild(i)->asGeode()->getDrawable(0)->asGeometry());
}

} // namespace

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
        if (const auto scene = orbisk::makeObjScene(*file, options, states))
            checkScene(*scene);
    }
    return 0;
}
