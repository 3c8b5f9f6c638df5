#pragma once

#include <wx/string.h>

namespace orbisk {

/// Opens a web address with the system's command for the file type "html"; without one nothing
/// happens. The command gets the address as one argument, exactly as it stands, whatever characters
/// are in it. Main thread.
void openInBrowser(const wxString& address);

} // namespace orbisk
