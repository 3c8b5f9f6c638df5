#pragma once

#include <wx/window.h>

#include <stdexcept>
#include <string>

namespace orbisk::test {

/// The window of this name and kind below `parent`; throws where there is none.
template <class Window>
Window& namedWindow(const wxWindow* parent, const char* name) {
    auto* window = dynamic_cast<Window*>(wxWindow::FindWindowByName(name, parent));
    if (!window)
        throw std::runtime_error(std::string("no such window: ") + name);
    return *window;
}

} // namespace orbisk::test
