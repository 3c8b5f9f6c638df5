#pragma once

#include <string>

struct _XDisplay;

namespace orbisk::bench {

/// Looks for windows on the display, as another program does.
class ShownWindow {
public:
    /// Throws where there is no display.
    ShownWindow();
    ~ShownWindow();

    ShownWindow(const ShownWindow&) = delete;
    ShownWindow& operator=(const ShownWindow&) = delete;

    /// Whether a window of this title is on the screen.
    bool exists(const std::string& title) const;

    /// Asks the window of this title to close, as its close button does; without one nothing
    /// happens.
    void close(const std::string& title) const;

private:
    _XDisplay* m_display;
};

} // namespace orbisk::bench
