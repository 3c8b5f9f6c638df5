#include "online/URLDialog.h"

#include "app/WebBrowser.h"
#include "online/OnlineAddresses.h"

#include <wx/button.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

namespace orbisk {

namespace {

const wxSize clientSize(422, 103);
const wxSize textSize(269, 22);
/// To the edge, as the sizer of standard buttons has it.
constexpr int margin = 12;
constexpr int gap = 8;

} // namespace

URLDialog::URLDialog(wxWindow* parent)
    : wxDialog(parent, wxID_ANY, _("URL Open..."), wxDefaultPosition, wxDefaultSize,
               wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX) {
    auto* label = new wxStaticText(this, wxID_ANY, _("URL:"), wxDefaultPosition, wxDefaultSize, 0,
                                   "ID_STATICTEXT");
    m_text = new wxTextCtrl(this, wxID_ANY, wxEmptyString, wxDefaultPosition, FromDIP(textSize), 0,
                            wxDefaultValidator, "ID_TEXTCTRL");
    auto* again = new wxButton(this, wxID_ANY, _("Label"), wxDefaultPosition, wxDefaultSize,
                               wxBU_EXACTFIT, wxDefaultValidator, "ID_BUTTON1");
    again->SetToolTip(_("Put the proposed address back"));
    again->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { m_text->ChangeValue(m_proposed); });
    auto* ok = new wxButton(this, wxID_OK, _("OK"));
    ok->SetDefault();

    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(label, wxSizerFlags().CentreVertical());
    row->Add(m_text, wxSizerFlags().CentreVertical().Border(wxLEFT | wxRIGHT, FromDIP(gap)));
    row->Add(again, wxSizerFlags(1).CentreVertical());
    auto* buttons = new wxStdDialogButtonSizer;
    buttons->AddButton(ok);
    buttons->AddButton(new wxButton(this, wxID_CANCEL, _("Cancel")));
    buttons->Realize();
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(row, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT, FromDIP(margin)));
    column->Add(buttons, wxSizerFlags().Expand().Border(wxBOTTOM, FromDIP(margin)));
    SetSizer(column);
    SetClientSize(FromDIP(clientSize));
    Layout();
    Centre(wxBOTH);
}

void URLDialog::setAddress(const wxString& address) {
    m_proposed = address;
    m_text->SetValue(address);
}

wxString URLDialog::address() const {
    return m_text->GetValue();
}

void openUrlWithDialog(wxWindow* parent) {
    auto* dialog = new URLDialog(parent);
    dialog->setAddress(wxString::FromUTF8(storedUrl()));
    dialog->ShowModal();
    // Cancel and the close box open the address as well: closing the dialog is what asks for it.
    openInBrowser(dialog->address());
    dialog->Destroy();
}

} // namespace orbisk
