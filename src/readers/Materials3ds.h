#pragma once

#include "readers/File3ds.h"

#include <osg/Image>
#include <osg/StateSet>
#include <osg/Texture2D>
#include <osg/ref_ptr>
#include <osgDB/Options>

#include <map>
#include <string>

namespace orbisk {

/// Makes what materials of 3DS files mean to OpenGL, and reads the pictures they name.
class Materials3ds {
public:
    /// @param folder where pictures are looked for first, by names in letters of any case.
    /// @param options of the reader; may be null.
    Materials3ds(std::string folder, const osgDB::Options* options);

    osg::ref_ptr<osg::StateSet> makeStateSet(const Material3ds& material);

private:
    struct Look;

    osg::Texture2D* textureOf(const TextureMap3ds& map);
    osg::ref_ptr<osg::Texture2D> makeTexture(const TextureMap3ds& map) const;
    void addDiffuseMap(const TextureMap3ds& map, Look& look);
    void addOpacityMap(const TextureMap3ds& map, Look& look);
    void addReflectionMap(const TextureMap3ds& map, Look& look);

    std::string m_folder;
    osg::ref_ptr<const osgDB::Options> m_options;
    std::map<std::string, osg::ref_ptr<osg::Texture2D>> m_textures; ///< null for a missing picture
};

} // namespace orbisk
