#include "app/WebBrowser.h"

#include "platform/Platform.h"

#include <wx/mimetype.h>
#include <wx/utils.h>

#include <memory>
#include <vector>

namespace orbisk {

namespace {

/// Stands for the address while the command is taken apart: a blank, a quote or a backslash of the
/// address itself must not have a meaning there.
constexpr const char* placeholder = "orbisk-address";

} // namespace

void openInBrowser(const wxString& address) {
    const std::unique_ptr<wxFileType> type(wxTheMimeTypesManager->GetFileTypeFromExtension("html"));
    wxString command;
    if (!type || !type->GetOpenCommand(&command, wxFileType::MessageParameters(placeholder)))
        return;
    wxArrayString words = platform::commandWords(command);
    if (words.empty())
        return;
    std::vector<const wchar_t*> pointers;
    for (wxString& word : words) {
        word.Replace(placeholder, address);
        pointers.push_back(word.wc_str());
    }
    pointers.push_back(nullptr);
    wxExecute(pointers.data(), wxEXEC_ASYNC);
}

} // namespace orbisk
