#include "app/About.h"

#include "app/WebAddress.h"

#include <wx/dialog.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

namespace orbisk {

namespace {

constexpr int headingPoints = 20;
constexpr int border = 8;
constexpr const char* indent = "       ";
constexpr const char* makerOwner = "Brenholt";
constexpr const char* makerMail = "info@brenholt.example";
constexpr const char* makerTelephone = "+86 00 0000 0000";
constexpr const char* makerMessenger = "00000000";

wxString line(const wxString& label, const wxString& value) {
    return indent + label + " " + value + "\n";
}

wxString aboutText() {
    return "\n" + wxString(indent) + _("Version: 2019-06-01 V1.1.0     ") + "\n" +
           line(_("Copyright:"), makerOwner) +
           line(_("Web site:"), wxString::FromUTF8(webAddress())) + line(_("E-mail:"), makerMail) +
           line(_("Telephone:"), makerTelephone) + line(_("QQ:"), makerMessenger) + indent;
}

} // namespace

void showAbout(wxWindow* parent) {
    wxDialog dialog(parent, wxID_ANY, _("About..."));
    auto* heading = new wxStaticText(&dialog, wxID_ANY, _(" Kelvane "), wxDefaultPosition,
                                     wxDefaultSize, wxALIGN_CENTRE_HORIZONTAL);
    heading->SetFont(wxFontInfo(headingPoints).Family(wxFONTFAMILY_SWISS).Bold());
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(heading, wxSizerFlags().Centre().Border(wxALL, dialog.FromDIP(border)));
    column->Add(new wxStaticText(&dialog, wxID_ANY, aboutText()),
                wxSizerFlags().Expand().Border(wxALL, dialog.FromDIP(border)));
    dialog.SetSizerAndFit(column);
    dialog.CentreOnScreen(wxBOTH);
    // There is no button that the key could press.
    dialog.Bind(wxEVT_CHAR_HOOK, [&dialog](wxKeyEvent& event) {
        if (event.GetKeyCode() == WXK_ESCAPE)
            dialog.EndModal(wxID_CANCEL);
        else
            event.Skip();
    });
    dialog.ShowModal();
}

} // namespace orbisk
