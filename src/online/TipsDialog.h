#pragma once

#include "online/TipPage.h"

#include <wx/dialog.h>

#include <memory>

namespace orbisk {

/// Shows a tip as a web page. What draws web pages is large, so it stands in a library of its own
/// that is loaded with the first dialog; where that fails, the toolkit's own HTML window takes its
/// place. Main thread.
class TipsDialog : public wxDialog {
public:
    /// @param webViewLibrary path of the library with the web view.
    TipsDialog(wxWindow* parent, wxWindowID id,
               const wxString& webViewLibrary = ownWebViewLibrary());

    /// Shows a tip's HTML.
    void setPage(const wxString& html);

    /// The page that the dialog shows.
    TipPage& page() { return *m_page; }

    /// The library that came with the program: it stands beside the executable.
    static wxString ownWebViewLibrary();

private:
    std::unique_ptr<TipPage> m_page;
};

} // namespace orbisk
