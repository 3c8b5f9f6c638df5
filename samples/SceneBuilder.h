// Turns meshes into scene graph nodes and stores them.
#pragma once

#include "Canvas.h"
#include "Mesh.h"

#include <osg/Geometry>
#include <osg/Group>
#include <osg/StateSet>

#include <array>
#include <string>

namespace samples {

/// How a surface reflects light, and which picture it shows.
struct SurfaceLook {
    const char* name;
    double ambient;
    double diffuse;
    double emission;
    bool usesAtlas;
};

const SurfaceLook& lookOf(Surface surface);

/// The state sets of all surfaces, sharing two textures that are stored beside the model.
class SurfaceStates {
public:
    /// @param groundFile, atlasFile  relative to the model's folder
    SurfaceStates(const Canvas& ground, const std::string& groundFile, const Canvas& atlas,
                  const std::string& atlasFile);
    osg::StateSet* state(Surface surface) const {
        return m_states[static_cast<std::size_t>(surface)].get();
    }

private:
    std::array<osg::ref_ptr<osg::StateSet>, kSurfaceCount> m_states;
};

osg::ref_ptr<osg::Geometry> toGeometry(const Mesh& mesh, const SurfaceStates& states);

/// A geode with one geometry for each surface of @p set that is not empty.
osg::ref_ptr<osg::Node> toGeode(const MeshSet& set, const SurfaceStates& states,
                                const std::string& name);

/// Writes an .osgb file whose pictures stay outside, under the names they carry.
/// Throws std::runtime_error on failure.
void writeBinary(const osg::Node& node, const std::string& path);

} // namespace samples
