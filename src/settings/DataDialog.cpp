#include "settings/DataDialog.h"

#include "app/Translatable.h"
#include "settings/AppSettings.h"
#include "settings/LeadingNumber.h"
#include "settings/RoamParameters.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/intl.h>
#include <wx/notebook.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/strconv.h>
#include <wx/textctrl.h>

namespace orbisk {

namespace {

constexpr int border = 5;
constexpr int columns = 2;
constexpr int notePoints = 8;
constexpr int textWidth = 160;

/// How a number is shown, in the order of the rows.
struct RowStyle {
    const char* label;
    const char* labelName;
    const char* textName;
    int decimals;
};

constexpr RowStyle rowStyles[] = {
    {translatable("Angle of view(deg):"), "ID_STATICTEXT_FOVY", "ID_FOVY", 6},
    {translatable("Height of roam(m):"), "ID_STATICTEXTHEIGHT", "ID_HEIGHT", 6},
    {translatable("speed of roam(m/s):"), "ID_STATICTEXT_SPEED", "ID_TEXTCTRL_SPEED", 6},
    {translatable("Roll of roam(deg)"), "ID_STATICTEXT1", "ID_TEXTCTRL1", 3},
    {translatable("Pitch of roam(deg)"), "ID_STATICTEXT2", "ID_TEXTCTRL2", 3},
    {translatable("Yaw of roam(deg)"), "ID_STATICTEXT3", "ID_TEXTCTRL3", 3},
};

wxStaticText* makeLabel(wxWindow* parent, const wxString& text, const char* name) {
    return new wxStaticText(parent, wxID_ANY, text, wxDefaultPosition, wxDefaultSize, 0, name);
}

/// Lays a page out, with a margin around.
void setContents(wxPanel& page, wxSizer* contents) {
    auto* margin = new wxBoxSizer(wxVERTICAL);
    margin->Add(contents, wxSizerFlags(1).Expand().Border(wxALL, page.FromDIP(border)));
    page.SetSizer(margin);
}

/// The toolkit's own labels would follow the system's language, not the program's.
wxSizer* makeButtons(wxDialog& dialog) {
    auto* ok = new wxButton(&dialog, wxID_OK, _("OK"));
    ok->SetDefault();
    auto* buttons = new wxStdDialogButtonSizer;
    buttons->AddButton(ok);
    buttons->AddButton(new wxButton(&dialog, wxID_CANCEL, _("Cancel")));
    buttons->Realize();
    return buttons;
}

} // namespace

DataDialog::DataDialog(wxWindow* parent, wxWindowID id, const wxPoint& pos, const wxSize& size) {
    Create(parent, id, _("Options"), pos, size);
    m_notebook = new wxNotebook(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, "ID_NOTEBOOK");
    buildParamPage();
    buildOptionsPage();
    fill();
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(m_notebook, wxSizerFlags(1).Expand().Border(wxALL, FromDIP(border)));
    column->Add(makeButtons(*this), wxSizerFlags().Expand().Border(wxALL, FromDIP(border)));
    SetSizerAndFit(column);
    SetSize(size);
}

void DataDialog::buildParamPage() {
    m_paramPage = new wxPanel(m_notebook, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                              wxTAB_TRAVERSAL, "ID_PANEL_PARAM");
    const wxSizerFlags centred = wxSizerFlags().CentreVertical().Border(wxALL, FromDIP(border));
    auto* rows = new wxFlexGridSizer(columns);
    rows->AddGrowableCol(columns - 1);
    for (std::size_t row = 0; row < rowCount; ++row) {
        const RowStyle& style = rowStyles[row];
        m_labels[row] = makeLabel(m_paramPage, wxGetTranslation(style.label), style.labelName);
        m_texts[row] = new wxTextCtrl(m_paramPage, wxID_ANY, wxEmptyString, wxDefaultPosition,
                                      FromDIP(wxSize(textWidth, wxDefaultCoord)), 0,
                                      wxDefaultValidator, style.textName);
        rows->Add(m_labels[row], centred);
        rows->Add(m_texts[row], wxSizerFlags(centred).Expand());
    }
    m_note = makeLabel(m_paramPage,
                       _("*The angle of view won't take effect until the next time it opens."),
                       "ID_STATICTEXTCOMMENT");
    m_note->SetFont(wxFontInfo(notePoints).Family(wxFONTFAMILY_SWISS).FaceName("Arial"));
    // Before it is shown a label takes itself to be as wide as in the usual font.
    m_note->SetMinSize(m_note->GetTextExtent(m_note->GetLabel()));
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(rows, wxSizerFlags().Expand());
    column->Add(m_note, wxSizerFlags().Border(wxALL, FromDIP(border)));
    setContents(*m_paramPage, column);
    m_notebook->AddPage(m_paramPage, _("Param"));
}

void DataDialog::buildOptionsPage() {
    m_optionsPage = new wxPanel(m_notebook, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                wxTAB_TRAVERSAL, "ID_PANEL_OPTIONS");
    m_skyboxLabel = makeLabel(m_optionsPage, _("Does the skybox show?"), "ID_STATICTEXT_SKYBOX");
    m_skyboxCheck = new wxCheckBox(m_optionsPage, wxID_ANY, _("SkyBox"), wxDefaultPosition,
                                   wxDefaultSize, 0, wxDefaultValidator, "ID_CHECKBOXSKYBOX");
    const wxSizerFlags centred = wxSizerFlags().CentreVertical().Border(wxALL, FromDIP(border));
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(m_skyboxLabel, centred);
    row->Add(m_skyboxCheck, centred);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(row);
    setContents(*m_optionsPage, column);
    m_notebook->AddPage(m_optionsPage, _("Options"));
}

void DataDialog::fill() {
    const RoamParameters& roam = roamParameters();
    show(fovyRow, appSettings().fovy);
    show(heightRow, roam.height);
    show(speedRow, roam.speed());
    show(rollRow, roam.roll);
    show(pitchRow, roam.pitch);
    show(yawRow, roam.yaw);
    m_skyboxCheck->SetValue(appSettings().sky_show != 0);
}

void DataDialog::transfer() const {
    RoamParameters& roam = roamParameters();
    appSettings().fovy = numberIn(fovyRow);
    roam.height = numberIn(heightRow);
    roam.setSpeed(numberIn(speedRow));
    appSettings().sky_show = m_skyboxCheck->IsChecked() ? 1 : 0;
    roam.roll = numberIn(rollRow);
    roam.pitch = numberIn(pitchRow);
    roam.yaw = numberIn(yawRow);
}

void DataDialog::show(Row row, double value) {
    m_texts[row]->SetValue(wxString::FromCDouble(value, rowStyles[row].decimals));
}

double DataDialog::numberIn(Row row) const {
    const wxString text = m_texts[row]->GetValue();
    // What the narrow encoding cannot hold leaves an empty text.
    return leadingNumber(text.mb_str(wxConvLibc).data());
}

} // namespace orbisk
