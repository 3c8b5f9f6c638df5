#pragma once

class wxMenu;
class wxWindow;

namespace orbisk {

/// Shows a context menu of `owner` at the pointer until something is chosen or it is closed. A
/// `NestedLoop` meanwhile.
void popUp(wxWindow& owner, wxMenu& menu);

} // namespace orbisk
