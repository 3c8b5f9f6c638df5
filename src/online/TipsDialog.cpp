#include "online/TipsDialog.h"

#include "app/WebBrowser.h"
#include "online/HtmlTipPage.h"
#include "online/InertPage.h"

#include <wx/button.h>
#include <wx/dynlib.h>
#include <wx/filename.h>
#include <wx/intl.h>
#include <wx/sizer.h>
#include <wx/stdpaths.h>

namespace orbisk {

namespace {

constexpr int border = 5;
const wxSize pageSize(480, 320);
constexpr const char* libraryName = "orbisk_webview";
constexpr const char* makerName = "orbiskMakeWebTipPage";

void followLink(const wxString& address) {
    if (mayFollowLink(address.utf8_string()))
        openInBrowser(address);
}

/// The function of the library that makes its page; null where it cannot be loaded.
TipPageMaker webTipPageMaker(const wxString& libraryPath) {
    wxDynamicLibrary library;
    if (!library.Load(libraryPath, wxDL_NOW | wxDL_VERBATIM | wxDL_QUIET))
        return nullptr;
    const auto maker = reinterpret_cast<TipPageMaker>(library.RawGetSymbol(makerName));
    // The web view leaves types and threads behind that cannot be unloaded.
    library.Detach();
    return maker;
}

std::unique_ptr<TipPage> makePage(wxWindow* parent, const wxString& webViewLibrary) {
    const wxWindowID id = wxWindow::NewControlId();
    std::unique_ptr<TipPage> page;
    if (const TipPageMaker maker = webTipPageMaker(webViewLibrary))
        page.reset(maker(parent, id, followLink));
    if (!page)
        page = std::make_unique<HtmlTipPage>(parent, id, followLink);
    return page;
}

} // namespace

TipsDialog::TipsDialog(wxWindow* parent, wxWindowID id, const wxString& webViewLibrary)
    : wxDialog(parent, id, _("Tips"), wxDefaultPosition, wxDefaultSize,
               wxCAPTION | wxSYSTEM_MENU | wxCLOSE_BOX),
      m_page(makePage(this, webViewLibrary)) {
    // Left to itself, a web view asks for hardly more room than an icon.
    m_page->window().SetMinSize(FromDIP(pageSize));
    auto* column = new wxFlexGridSizer(0, 1, 0, 0);
    column->Add(&m_page->window(), wxSizerFlags(1).Expand().Border(wxALL, border));
    column->Add(new wxButton(this, wxID_CANCEL, _("Close"), wxDefaultPosition, wxDefaultSize, 0,
                             wxDefaultValidator, "wxID_CANCEL"),
                wxSizerFlags().Right().Border(wxALL, border));
    SetSizer(column);
    Fit();
    column->SetSizeHints(this);
    Centre();
}

void TipsDialog::setPage(const wxString& html) {
    m_page->show(wxString::FromUTF8(inertPage(html.utf8_string())));
}

wxString TipsDialog::ownWebViewLibrary() {
    wxFileName file(wxStandardPaths::Get().GetExecutablePath());
    file.SetName(libraryName);
    file.SetExt(wxDynamicLibrary::GetDllExt(wxDL_MODULE).Mid(1));
    return file.GetFullPath();
}

} // namespace orbisk
