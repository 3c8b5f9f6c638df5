#pragma once

#include <wx/panel.h>
#include <wx/string.h>
#include <wx/windowid.h>

#include <functional>

class wxSizer;

namespace orbisk {

/// What the welcome panel asks of the main frame.
struct InitPanelActions {
    std::function<void(const wxString& path)> openModel;
    std::function<void()> openHelp;
    std::function<void()> layoutChanged;
};

/// The welcome panel: greets the user, opens a model or the help, and lists the recent files.
class InitPanel : public wxPanel {
public:
    InitPanel(wxWindow* parent, wxWindowID id, InitPanelActions actions);

    /// Shows the recent files as they are now, after the event at work.
    void refresh();

    /// First of the ten ids of the entry buttons, and of the delete buttons; entry i has base + i.
    static wxWindowID entryBase();
    static wxWindowID deleteBase();

private:
    void build();
    wxSizer* buildHeader();
    wxSizer* buildButtons();
    wxSizer* buildRecentFiles();
    wxSizer* buildCaptionedButton(const char* icon, const wxString& caption,
                                  void (InitPanel::*clicked)(wxCommandEvent&));
    void onOpen(wxCommandEvent& event);
    void onHelp(wxCommandEvent& event);
    void onEntry(wxCommandEvent& event);
    void onDelete(wxCommandEvent& event);

    InitPanelActions m_actions;
    wxWindow* m_page = nullptr;
};

} // namespace orbisk
