#pragma once

#include "settings/SettingsFile.h"

#include <wx/string.h>

namespace orbisk {

/// A path as the settings record holds it, as the toolkit's text, and back.
wxString recentPathText(const std::string& utf8);
std::string recentPath(const wxString& text);

/// How the settings file holds paths on this system.
PathEncoding settingsPathEncoding();

} // namespace orbisk
