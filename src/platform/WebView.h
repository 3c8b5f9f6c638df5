#pragma once

#include "online/TipPage.h"

class wxWebView;

namespace orbisk::platform {

/// Turns off all that a page could do in a web view of this system: scripts, storage, media,
/// connections to anywhere, and any navigation; links that the user clicks go to `follow` instead.
/// @return whether the view is one that it can be done with.
bool makeInert(wxWebView& view, LinkFollower follow);

} // namespace orbisk::platform
