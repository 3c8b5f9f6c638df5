#pragma once

#include <osg/Drawable>
#include <osg/Node>

namespace orbisk {

/// Makes a drawable that changes its vertices in every frame (skins and morphs) safe to do so: what
/// names vertices that are not there is taken out of it, and what cannot be mended stands still.
/// Others stay as they are.
void checkAnimation(osg::Drawable& drawable);

/// Takes from a node callbacks that would never end or follow numbers that are none.
void checkCallbacks(osg::Node& node);

} // namespace orbisk
