#pragma once

#include <wx/window.h>

namespace orbisk {

/// Shows the About box over `parent` until it is closed.
void showAbout(wxWindow* parent);

} // namespace orbisk
