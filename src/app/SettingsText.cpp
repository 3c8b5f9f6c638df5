#include "app/SettingsText.h"

#include "platform/Platform.h"

namespace orbisk {

wxString recentPathText(const std::string& utf8) {
    return wxString::FromUTF8(utf8.data(), utf8.size());
}

std::string recentPath(const wxString& text) {
    return text.ToStdString(wxConvUTF8);
}

PathEncoding settingsPathEncoding() {
    return {
        [](const std::string& path) { return platform::localPath(recentPathText(path)); },
        [](const std::string& path) { return recentPath(platform::pathText(path)); },
    };
}

} // namespace orbisk
