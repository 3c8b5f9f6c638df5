#pragma once

#include <wx/string.h>
#include <wx/window.h>

namespace orbisk {

/// Shows the HTML of a tip. Links that are clicked are handed on; nothing in it acts or is fetched.
/// Goes before its window, which belongs to the window's parent. Main thread.
class TipPage {
public:
    virtual ~TipPage() = default;

    /// The window that shows the page.
    virtual wxWindow& window() = 0;

    /// Puts this HTML in the place of what is shown.
    virtual void show(const wxString& html) = 0;
};

/// What is done with the address of a link that the user clicked.
using LinkFollower = void (*)(const wxString& address);

/// Makes a page as a child of `parent`, owned by the caller; null where there can be none.
using TipPageMaker = TipPage* (*)(wxWindow* parent, wxWindowID id, LinkFollower follow);

} // namespace orbisk
