#pragma once

#include <wx/app.h>
#include <wx/intl.h>

#include <memory>

namespace orbisk {

/// The application: loads the settings, sets up the language and shows the main frame.
class OrbiskApp : public wxApp {
public:
    bool OnInit() override;

    int OnExit() override;

    /// Installs the program's texts of the settings' language.
    void setUpLocale();

    /// A model to open once the frame was seen, as if chosen from the menu. Before `OnInit`.
    static void openAtStart(const wxString& path);

protected:
    wxAppTraits* CreateTraits() override;

private:
    std::unique_ptr<wxLocale> m_locale;
};

} // namespace orbisk

wxDECLARE_APP(orbisk::OrbiskApp);

namespace orbisk {
using ::wxGetApp;
}
