#pragma once

#include <osg/Node>
#include <osg/ref_ptr>

namespace orbisk {

/// What stands in the scene for a node that was read: the node itself where it is of a class that
/// is shown (readers/NativeClasses.h) or of a reader's own, else a plain one, with the same
/// children if it has any.
osg::ref_ptr<osg::Node> shownForm(osg::Node& node);

/// Makes one node safe to walk, to move and to draw, not its children: lists that go with the
/// children become as long as these, numbers that place them are sensible or the children go,
/// numbers that would take gigabytes are bounded. A drawable's arrays are `checkGeometry`'s.
void checkNode(osg::Node& node);

} // namespace orbisk
