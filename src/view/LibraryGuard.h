#pragma once

namespace orbisk {

/// Has the scene-graph library load plug-ins from its own folders only, and of these only the ones
/// that `isPluginAllowed` lets through.
///
/// A model names the classes of its parts, and the library loads a plug-in for each name that it
/// does not know: from the working folder too, and, as a name may have slashes, from anywhere.
void installLibraryGuard();

} // namespace orbisk
