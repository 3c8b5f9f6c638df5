#include "online/HtmlTipPage.h"

#include <wx/html/htmlwin.h>

namespace orbisk {

class HtmlTipPage::Window : public wxHtmlWindow {
public:
    Window(wxWindow* parent, wxWindowID id, LinkFollower follow)
        : wxHtmlWindow(parent, id), m_follow(follow) {}

protected:
    wxHtmlOpeningStatus OnOpeningURL(wxHtmlURLType, const wxString&, wxString*) const override {
        return wxHTML_BLOCK;
    }

    void OnLinkClicked(const wxHtmlLinkInfo& link) override { m_follow(link.GetHref()); }

private:
    LinkFollower m_follow;
};

HtmlTipPage::HtmlTipPage(wxWindow* parent, wxWindowID id, LinkFollower follow)
    : m_window(new Window(parent, id, follow)) {}

wxWindow& HtmlTipPage::window() {
    return *m_window;
}

void HtmlTipPage::show(const wxString& html) {
    m_window->SetPage(html);
}

} // namespace orbisk
