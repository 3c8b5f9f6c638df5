#pragma once

#include "online/TipPage.h"

class wxWebView;

namespace orbisk {

/// A tip in a web view, which draws it as a browser does.
class WebTipPage : public TipPage {
public:
    /// @param view a child of the dialog, inert.
    explicit WebTipPage(wxWebView& view);

    wxWindow& window() override;
    void show(const wxString& html) override;

private:
    wxWebView& m_view;
};

} // namespace orbisk
