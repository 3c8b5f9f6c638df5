#pragma once

#include "readers/MtlFile.h"
#include "readers/ObjOptions.h"

#include <osg/Image>
#include <osg/StateSet>
#include <osg/ref_ptr>
#include <osgDB/Options>

#include <map>
#include <string>

namespace orbisk {

/// Makes state sets of a file's materials, each once, when it is asked for first; their pictures
/// are read then, through the library, each once too.
class MaterialStates {
public:
    /// @param folder of the model, where pictures are looked for first; empty when it has none.
    /// @param options to read the pictures with; null for none.
    MaterialStates(MtlMaterials materials, const ObjOptions& objOptions, std::string folder,
                   const osgDB::Options* options);

    /// The state set of a material; null where there is none of this name. A picture that can't be
    /// read is left out.
    osg::ref_ptr<osg::StateSet> stateSet(const std::string& name);

private:
    osg::ref_ptr<osg::StateSet> makeStateSet(const std::string& name, const MtlMaterial& material);
    void addMap(const MtlMap& map, unsigned int unit, osg::StateSet& states);
    osg::ref_ptr<osg::Image> image(const std::string& file);

    MtlMaterials m_materials;
    ObjOptions m_objOptions;
    std::string m_folder;
    osg::ref_ptr<const osgDB::Options> m_options;
    std::map<std::string, osg::ref_ptr<osg::StateSet>> m_stateSets;
    std::map<std::string, osg::ref_ptr<osg::Image>> m_images; ///< null where there is none
};

} // namespace orbisk
