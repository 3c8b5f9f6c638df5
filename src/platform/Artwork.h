#pragma once

#include <wx/bmpbndl.h>

#include <string>

namespace orbisk::platform {

/// A built-in drawing (an icon's or a picture's name) at this size in pixels at 100 %, crisp at any
/// scale; an empty bundle when there is none. Sizes that were painted while the program was built
/// are only decoded, others painted when they are asked for. Main thread.
wxBitmapBundle artwork(const std::string& name, const wxSize& size);

} // namespace orbisk::platform
