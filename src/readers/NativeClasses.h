#pragma once

#include <string>

namespace orbisk {

/// Whether nodes and drawables of this class ("osg::Group") are shown: their numbers can be checked
/// once they are read. Of the others' effects, particles, volumes and the like nothing is known.
bool isShownClass(const std::string& className);

/// The class that is read from a native file in place of the class that the file names, by which a
/// file can ask for any part of the library:
///
/// - for a node or drawable that is shown, and for what belongs to it, the same;
/// - for one that is not, the nearest of its bases that is: an effect becomes a group, so that what
///   it is an effect on is seen;
/// - for anything else "osg::Object", which makes nothing.
///
/// A class that nobody knows stays as it is. Any thread.
std::string readClassFor(const std::string& className);

} // namespace orbisk
