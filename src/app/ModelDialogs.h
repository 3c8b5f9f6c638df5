#pragma once

#include <wx/string.h>
#include <wx/window.h>

namespace orbisk {

/// Asks which model to open, as the command does; a file that exists. Main thread.
/// @return its path; empty when the user gave up.
wxString askForModelToOpen(wxWindow* parent);

/// The same as the button of the welcome page asks, whose kinds of files are its own.
wxString askForModelOnWelcomePage(wxWindow* parent);

/// Asks where to save the model; where a file stands already, the user has agreed to replace it.
/// Main thread.
/// @return the path; empty when the user gave up.
wxString askWhereToSaveModel(wxWindow* parent);

} // namespace orbisk
