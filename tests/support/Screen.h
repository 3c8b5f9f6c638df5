#pragma once

#include <wx/gdicmn.h>

#include <set>
#include <string>
#include <vector>

struct _XDisplay;

namespace orbisk::test {

/// The test's X display as others see it: over a connection of its own, past the toolkit.
class Screen {
public:
    Screen();
    ~Screen();

    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Number of windows on the display, those of the window manager among them.
    std::size_t windowCount() const;

    /// Titles of the top-level windows that the window manager looks after.
    std::vector<std::string> titles() const;

    /// Size of the window of this title without its decorations (physical pixels); zero without
    /// one.
    wxSize sizeOf(const std::string& title) const;

    /// Asks the window manager to close the window of this title, as its close button does.
    /// @return whether there is one.
    bool closeWindow(const std::string& title) const;

    /// Turns the mouse wheel by one notch where the pointer is.
    void turnWheel(bool awayFromTheUser) const;

    /// The different colours in a rectangle of the screen (physical pixels).
    std::set<unsigned long> colours(const wxRect& rect) const;

private:
    unsigned long windowOf(const std::string& title) const;

    _XDisplay* m_display;
};

} // namespace orbisk::test
