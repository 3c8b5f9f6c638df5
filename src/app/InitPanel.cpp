#include "app/InitPanel.h"

#include "app/ModelDialogs.h"
#include "app/RecentFiles.h"
#include "app/SettingsText.h"
#include "platform/Artwork.h"
#include "platform/Platform.h"
#include "settings/AppSettings.h"

#include <wx/bmpbuttn.h>
#include <wx/intl.h>
#include <wx/scrolwin.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

#include <algorithm>
#include <array>
#include <utility>

namespace orbisk {

namespace {

constexpr int headingPoints = 36;
constexpr int greetingPoints = 13;
constexpr int entryPoints = 10;
constexpr int textPoints = 9;
constexpr int buttonIconSide = 48;
constexpr int trashIconSide = 32;
constexpr int gap = 8;
constexpr int wideGap = 28;
constexpr int pageMargin = 40;
constexpr int scrollStep = 16;
const wxSize bannerSize(250, 70);
const wxSize pictureSize(128, 128);

/// Ten ids in a row, kept for the life of the process.
class IdRun {
public:
    IdRun() : m_base(wxIdManager::ReserveId(static_cast<int>(maxRecentFiles))) {
        for (std::size_t i = 0; i < m_kept.size(); ++i)
            m_kept[i] = m_base + static_cast<wxWindowID>(i);
    }

    wxWindowID base() const { return m_base; }

private:
    wxWindowID m_base;
    std::array<wxWindowIDRef, maxRecentFiles> m_kept;
};

wxStaticText* makeText(wxWindow* parent, const wxString& text, const wxFont& font) {
    auto* label = new wxStaticText(parent, wxID_ANY, text);
    label->SetFont(font);
    label->SetForegroundColour(*wxBLACK);
    return label;
}

wxFont plainFont() {
    return wxFontInfo(textPoints).Family(wxFONTFAMILY_SWISS);
}

} // namespace

wxWindowID InitPanel::entryBase() {
    static const IdRun run;
    return run.base();
}

wxWindowID InitPanel::deleteBase() {
    static const IdRun run;
    return run.base();
}

InitPanel::InitPanel(wxWindow* parent, wxWindowID id, InitPanelActions actions)
    : wxPanel(parent, id, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "ID_PANEL_INIT"),
      m_actions(std::move(actions)) {
    SetBackgroundColour(wxColour(255, 255, 255, 255));
    const auto lastOf = [](wxWindowID base) {
        return base + static_cast<wxWindowID>(maxRecentFiles) - 1;
    };
    Bind(wxEVT_BUTTON, &InitPanel::onEntry, this, entryBase(), lastOf(entryBase()));
    Bind(wxEVT_BUTTON, &InitPanel::onDelete, this, deleteBase(), lastOf(deleteBase()));
    build();
}

void InitPanel::build() {
    auto* page = new wxScrolledWindow(this, wxID_ANY);
    page->SetScrollRate(scrollStep, scrollStep);
    page->SetBackgroundColour(GetBackgroundColour());
    m_page = page;
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(buildHeader(), wxSizerFlags().Border(wxBOTTOM, FromDIP(wideGap)));
    column->Add(buildButtons(), wxSizerFlags().Border(wxBOTTOM, FromDIP(wideGap)));
    column->Add(buildRecentFiles(), wxSizerFlags().Expand());
    auto* margins = new wxBoxSizer(wxVERTICAL);
    margins->Add(column, wxSizerFlags().Centre().Border(wxALL, FromDIP(pageMargin)));
    page->SetSizer(margins);

    auto* whole = new wxBoxSizer(wxVERTICAL);
    whole->Add(page, wxSizerFlags(1).Expand());
    SetSizer(whole);
}

wxSizer* InitPanel::buildHeader() {
    auto* texts = new wxBoxSizer(wxVERTICAL);
    texts->Add(
        makeText(m_page, _("Orbisk"),
                 wxFontInfo(headingPoints).Family(wxFONTFAMILY_SWISS).FaceName("Georgia").Bold()),
        wxSizerFlags().Border(wxBOTTOM, FromDIP(gap)));
    texts->Add(makeText(m_page, _("Welcome to Brenholt , welcome to Orbisk !"),
                        wxFontInfo(greetingPoints).Family(wxFONTFAMILY_SWISS).Bold()));
    auto* header = new wxBoxSizer(wxHORIZONTAL);
    header->Add(new wxStaticBitmap(m_page, wxID_ANY, platform::artwork("welcome", pictureSize)),
                wxSizerFlags().Centre().Border(wxRIGHT, FromDIP(wideGap)));
    header->Add(texts, wxSizerFlags().Centre());
    return header;
}

wxSizer* InitPanel::buildButtons() {
    auto* row = new wxBoxSizer(wxHORIZONTAL);
    row->Add(buildCaptionedButton("icon_open48", _("Open file"), &InitPanel::onOpen),
             wxSizerFlags().Border(wxRIGHT, FromDIP(wideGap)));
    row->Add(buildCaptionedButton("icon_help48", _("Help file"), &InitPanel::onHelp),
             wxSizerFlags().Border(wxRIGHT, FromDIP(wideGap)));
    row->Add(new wxStaticBitmap(m_page, wxID_ANY, platform::artwork("banner", bannerSize)),
             wxSizerFlags().Centre());
    return row;
}

wxSizer* InitPanel::buildCaptionedButton(const char* icon, const wxString& caption,
                                         void (InitPanel::*clicked)(wxCommandEvent&)) {
    auto* button =
        new wxBitmapButton(m_page, wxID_ANY, platform::iconResource(icon, buttonIconSide));
    button->SetToolTip(caption);
    platform::nameForScreenReaders(*button, caption);
    button->Bind(wxEVT_BUTTON, clicked, this);
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(button, wxSizerFlags().Centre().Border(wxBOTTOM, FromDIP(gap)));
    column->Add(makeText(m_page, caption, plainFont()), wxSizerFlags().Centre());
    return column;
}

wxSizer* InitPanel::buildRecentFiles() {
    auto* column = new wxBoxSizer(wxVERTICAL);
    column->Add(makeText(m_page, _("Recent files"), plainFont()),
                wxSizerFlags().Border(wxBOTTOM, FromDIP(gap)));
    auto* rows = new wxFlexGridSizer(2, 0, FromDIP(gap));
    const auto& recent = appSettings().path_recent;
    const auto shown = static_cast<wxWindowID>(std::min(recent.size(), maxRecentFiles));
    for (wxWindowID index = 0; index < shown; ++index) {
        const std::string& path = recent[static_cast<std::size_t>(index)];
        auto* entry = new wxButton(
            m_page, entryBase() + index, wxControl::EscapeMnemonics(recentPathText(path)),
            wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxBU_LEFT | wxBU_EXACTFIT);
        entry->SetFont(wxFontInfo(entryPoints).Family(wxFONTFAMILY_SWISS).Underlined());
        entry->SetBackgroundColour(GetBackgroundColour());
        auto* trash = new wxBitmapButton(
            m_page, deleteBase() + index, platform::iconResource("icon_trash32", trashIconSide),
            wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxBU_EXACTFIT);
        trash->SetBitmapCurrent(platform::iconResource("icon_trash_current32", trashIconSide));
        trash->SetBackgroundColour(GetBackgroundColour());
        trash->SetToolTip(_("Remove from the list"));
        platform::nameForScreenReaders(*trash, _("Remove from the list"));
        platform::underlineLabel(*entry);
        platform::makeFlat(*entry);
        platform::makeFlat(*trash);
        rows->Add(entry, wxSizerFlags().CentreVertical());
        rows->Add(trash, wxSizerFlags().CentreVertical());
    }
    column->Add(rows);
    return column;
}

void InitPanel::onOpen(wxCommandEvent&) {
    const wxString path = askForModelOnWelcomePage(this);
    if (!path.empty())
        m_actions.openModel(path);
}

void InitPanel::onHelp(wxCommandEvent&) {
    m_actions.openHelp();
}

void InitPanel::onEntry(wxCommandEvent& event) {
    const auto index = static_cast<std::size_t>(event.GetId() - entryBase());
    const auto& recent = appSettings().path_recent;
    if (index < recent.size())
        m_actions.openModel(recentPathText(recent[index]));
}

void InitPanel::onDelete(wxCommandEvent& event) {
    const int index = event.GetId() - deleteBase();
    if (index < 0 || index >= static_cast<int>(maxRecentFiles))
        return;
    removeRecentFile(static_cast<std::size_t>(index), appSettings().path_recent);
    refresh();
}

void InitPanel::refresh() {
    // The button that was clicked may be one of the children that go: after its event is over.
    CallAfter([this] {
        SetSizer(nullptr);
        DestroyChildren();
        build();
        Layout();
        m_actions.layoutChanged();
    });
}

} // namespace orbisk
