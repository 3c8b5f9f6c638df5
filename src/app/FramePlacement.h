#pragma once

#include "settings/AppSettings.h"

#include <wx/frame.h>

namespace orbisk {

/// Gives a frame that is not shown yet its saved geometry (screen pixels), or the whole display
/// where it filled that; three quarters of the display are what it goes back to then. Window
/// managers choose a place for a new window themselves, so the place is asked for again once the
/// frame is shown. Main thread.
void restorePlacement(wxFrame& frame, const WindowRect& saved);

/// Where the frame stands now, to be restored later.
WindowRect placementOf(wxFrame& frame);

} // namespace orbisk
