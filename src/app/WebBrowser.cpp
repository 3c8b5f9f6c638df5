#include "app/WebBrowser.h"

#include <wx/mimetype.h>
#include <wx/utils.h>

#include <memory>

namespace orbisk {

void openInBrowser(const wxString& address) {
    const std::unique_ptr<wxFileType> type(wxTheMimeTypesManager->GetFileTypeFromExtension("html"));
    wxString command;
    if (type && type->GetOpenCommand(&command, wxFileType::MessageParameters(address)))
        wxExecute(command, wxEXEC_ASYNC);
}

} // namespace orbisk
