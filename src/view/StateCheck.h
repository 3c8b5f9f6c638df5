#pragma once

#include <osg/Image>
#include <osg/StateSet>

namespace orbisk {

/// Whether all that the size, the format and the levels of an image stand for is in its memory.
bool isWhole(osg::Image& image);

/// Makes state safe to apply: textures lose images that are not whole, uniforms whose array is
/// shorter than their elements go.
void checkState(osg::StateSet& state);

} // namespace orbisk
