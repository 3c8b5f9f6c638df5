#include "app/IconStatusBar.h"

#include "app/WebAddress.h"
#include "app/WebBrowser.h"
#include "platform/Artwork.h"
#include "platform/Platform.h"

#include <wx/bmpbuttn.h>
#include <wx/panel.h>
#include <wx/sizer.h>

namespace orbisk {

namespace {

constexpr int fieldCount = 2;
constexpr int linkFieldWidth = 250;
constexpr int linkField = 1;
constexpr int logoWidth = 250;
constexpr int logoHeight = 70;
constexpr int linkGap = 6;
const wxColour linkColour(0, 0, 255);

/// The logo at the height of the field, its aspect kept.
wxBitmapBundle logoOfHeight(int height) {
    const wxSize size(logoWidth * height / logoHeight, height);
    return platform::artwork("logo", size);
}

} // namespace

IconStatusBar::IconStatusBar(wxWindow* parent, wxWindowID id, long style, const wxString& name) {
    Create(parent, id, style, name);
    const int fieldWidths[fieldCount] = {-1, FromDIP(linkFieldWidth)};
    SetFieldsCount(fieldCount, fieldWidths);
    wxRect field;
    GetFieldRect(linkField, field);
    buildPanel(field);
    Bind(wxEVT_SIZE, &IconStatusBar::onSize, this);
    const auto openWebSite = [](wxCommandEvent&) {
        openInBrowser(wxString::FromUTF8(webAddress()));
    };
    Bind(wxEVT_BUTTON, openWebSite, linkButtonId);
    Bind(wxEVT_BUTTON, openWebSite, logoButtonId);
}

void IconStatusBar::buildPanel(const wxRect& field) {
    m_panel = new wxPanel(this, wxID_ANY, field.GetPosition(), field.GetSize(),
                          wxBORDER_NONE | wxTAB_TRAVERSAL);
    auto* logo = new wxBitmapButton(m_panel, logoButtonId, logoOfHeight(ToDIP(field.height)),
                                    wxDefaultPosition, wxDefaultSize, wxBORDER_NONE);
    platform::nameForScreenReaders(*logo, wxString::FromUTF8(webAddress()));
    auto* link = new wxButton(m_panel, linkButtonId, wxString::FromUTF8(webAddress()),
                              wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxBU_EXACTFIT);
    link->SetForegroundColour(linkColour);
    link->SetFont(wxFontInfo(GetFont().GetPointSize())
                      .Family(wxFONTFAMILY_SWISS)
                      .FaceName("Georgia")
                      .Underlined());
    platform::underlineLabel(*link);
    platform::makeFlat(*logo);
    platform::makeFlat(*link);
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(logo, wxSizerFlags().CentreVertical().Border(wxRIGHT, FromDIP(linkGap)));
    row->Add(link, wxSizerFlags().CentreVertical());
    m_panel->SetSizer(row);
    row->Fit(m_panel);
    m_panel->SetSize(field);
}

void IconStatusBar::onSize(wxSizeEvent& event) {
    event.Skip();
    wxRect field;
    // While the frame is being shown the bar may be too small to have an inside.
    if (m_panel && GetFieldRect(linkField, field) && field.width > 0 && field.height > 0)
        m_panel->SetSize(field);
}

} // namespace orbisk
