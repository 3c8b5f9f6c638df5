#pragma once

#include <wx/dialog.h>

class wxTextCtrl;

namespace orbisk {

/// Asks for a web address. Main thread.
class URLDialog : public wxDialog {
public:
    explicit URLDialog(wxWindow* parent);

    /// Proposes an address; the button "Label" brings it back whenever it was edited.
    void setAddress(const wxString& address);

    /// The address as it stands in the dialog.
    wxString address() const;

private:
    wxTextCtrl* m_text = nullptr;
    wxString m_proposed;
};

/// Asks for a web address, proposing the stored one, and opens what then stands in the dialog in
/// the browser, whichever button closed it.
void openUrlWithDialog(wxWindow* parent);

} // namespace orbisk
