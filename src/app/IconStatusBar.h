#pragma once

#include <wx/statusbr.h>

class wxPanel;

namespace orbisk {

/// The frame's status bar: messages in field 0; over field 1 the maker's logo and a link to its
/// web site (`webAddress`).
class IconStatusBar : public wxStatusBar {
public:
    static constexpr int linkButtonId = 6100;
    static constexpr int logoButtonId = 6101;

    IconStatusBar(wxWindow* parent, wxWindowID id, long style, const wxString& name);

private:
    void buildPanel(const wxRect& field);
    void onSize(wxSizeEvent& event);

    wxPanel* m_panel = nullptr;
};

} // namespace orbisk
