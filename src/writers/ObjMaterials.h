#pragma once

#include <osg/Material>
#include <osg/StateSet>
#include <osg/TexMat>
#include <osg/Texture>
#include <osg/ref_ptr>

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace orbisk {

/// What of a geometry's state an OBJ file can keep: its own where it has one, else what it
/// inherits.
struct ObjSurface {
    osg::ref_ptr<const osg::Material> material;
    osg::ref_ptr<const osg::Texture> texture;      ///< on unit 0
    osg::ref_ptr<const osg::TexMat> textureMatrix; ///< likewise

    /// This surface with what `state` (null: nothing) puts in its place.
    ObjSurface with(const osg::StateSet* state) const;
};

/// The materials of an OBJ file, in the order of their first use.
class ObjMaterials {
public:
    /// The name under which the file refers to a surface; empty where there is nothing to say.
    std::string nameOf(const ObjSurface& surface);

    bool empty() const { return m_surfaces.empty(); }

    /// Writes them as an MTL file.
    void write(std::ostream& out) const;

private:
    std::vector<std::pair<std::string, ObjSurface>> m_surfaces;
    std::map<std::pair<const osg::Material*, const osg::Image*>, std::size_t> m_known;
};

} // namespace orbisk
