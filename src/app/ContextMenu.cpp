#include "app/ContextMenu.h"

#include "app/NestedLoop.h"
#include "platform/Platform.h"

#include <wx/menu.h>
#include <wx/window.h>

namespace orbisk {

void popUp(wxWindow& owner, wxMenu& menu) {
    // The toolkit waits for the menu to be hidden, and would for ever once its window is gone.
    const NestedLoop loop([&menu] { platform::closeMenu(menu); });
    owner.PopupMenu(&menu);
}

} // namespace orbisk
