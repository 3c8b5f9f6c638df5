#include "online/WebTipPage.h"

#include "platform/WebView.h"

#include <wx/webview.h>

#include <memory>

namespace orbisk {

WebTipPage::WebTipPage(wxWebView& view) : m_view(view) {}

wxWindow& WebTipPage::window() {
    return m_view;
}

void WebTipPage::show(const wxString& html) {
    m_view.SetPage(html, wxEmptyString);
}

} // namespace orbisk

/// What the program looks up in this library; a `TipPageMaker`.
extern "C" WXEXPORT orbisk::TipPage* orbiskMakeWebTipPage(wxWindow* parent, wxWindowID id,
                                                          orbisk::LinkFollower follow) {
    wxWebView* view = wxWebView::New(parent, id);
    if (!view)
        return nullptr;
    if (!orbisk::platform::makeInert(*view, follow)) {
        view->Destroy();
        return nullptr;
    }
    return std::make_unique<orbisk::WebTipPage>(*view).release();
}
