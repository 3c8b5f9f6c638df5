#pragma once

#include <chrono>
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

    /// Waits until a window of this title, which was not there before, is on the screen in a window
    /// manager's frame. The server tells when windows come: asking again and again would take the
    /// processor from who is waited for. Throws when it takes longer than `limit`.
    void waitUntilShown(const std::string& title, std::chrono::milliseconds limit) const;

    /// Waits until no window of this title is on the screen. Throws as well.
    void waitUntilGone(const std::string& title, std::chrono::milliseconds limit) const;

    /// Asks the window of this title to close, as its close button does; without one nothing
    /// happens.
    void close(const std::string& title) const;

private:
    _XDisplay* m_display;
};

} // namespace orbisk::bench
