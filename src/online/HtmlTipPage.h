#pragma once

#include "online/TipPage.h"

namespace orbisk {

/// A tip in the toolkit's own HTML window. It knows neither scripts nor style sheets, and pictures
/// are left out.
class HtmlTipPage : public TipPage {
public:
    HtmlTipPage(wxWindow* parent, wxWindowID id, LinkFollower follow);

    wxWindow& window() override;
    void show(const wxString& html) override;

private:
    class Window;

    Window* m_window;
};

} // namespace orbisk
