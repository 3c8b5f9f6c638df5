#pragma once

#include <wx/string.h>

namespace orbisk {

/// Opens a web address with the system's command for the file type "html"; without one nothing
/// happens.
void openInBrowser(const wxString& address);

} // namespace orbisk
