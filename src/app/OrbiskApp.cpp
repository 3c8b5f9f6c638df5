#include "app/OrbiskApp.h"

#include "app/Language.h"
#include "app/OrbiskMain.h"
#include "app/SettingsText.h"
#include "online/TipsThread.h"
#include "platform/Platform.h"
#include "settings/AppSettings.h"
#include "settings/SettingsFile.h"

#include <wx/apptrait.h>
#include <wx/filename.h>
#include <wx/image.h>
#include <wx/socket.h>
#include <wx/utils.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

wxIMPLEMENT_APP_NO_MAIN(orbisk::OrbiskApp);

namespace orbisk {

namespace {

wxString& modelAtStart() {
    static wxString path;
    return path;
}

/// A settings file that is not JSON ends the process: what the user had set must not be replaced
/// by defaults at the next close.
void loadSettingsOrEnd() {
    const wxSize display = wxGetDisplaySize();
    const auto error = loadSettings(appSettings(), {display.x, display.y}, settingsPathEncoding());
    if (!error)
        return;
    std::fprintf(stderr, "%s:%d:%d: %s\n", settingsFileName, error->line, error->column,
                 error->message.c_str());
    std::fflush(nullptr);
    std::_Exit(EXIT_FAILURE);
}

} // namespace

void OrbiskApp::openAtStart(const wxString& path) {
    wxFileName file(path);
    file.MakeAbsolute();
    modelAtStart() = file.GetFullPath();
}

bool OrbiskApp::OnInit() {
    loadSettingsOrEnd();
    setUpLocale();
    wxSocketBase::Initialize();
    wxInitAllImageHandlers();
    auto* frame = new OrbiskFrame(nullptr, wxID_ANY);
    frame->openOnceSeen(std::exchange(modelAtStart(), wxString()));
    platform::show(*frame);
    SetTopWindow(frame);
    return true;
}

int OrbiskApp::OnExit() {
    const int result = wxApp::OnExit();
    // A thread that waits for its server cannot be woken, and must not wake when what it uses is
    // gone already. The settings are saved, nothing else is left to do.
    if (TipsThread::isUnderWay()) {
        std::fflush(nullptr);
        std::_Exit(EXIT_SUCCESS);
    }
    return result;
}

wxAppTraits* OrbiskApp::CreateTraits() {
    return platform::makeAppTraits();
}

void OrbiskApp::setUpLocale() {
    orbisk::setUpLocale(appSettings().language, m_locale);
}

} // namespace orbisk
