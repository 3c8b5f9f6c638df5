#include "app/FramePlacement.h"

#include "app/WindowPlacement.h"
#include "platform/Platform.h"

#include <wx/gdicmn.h>

#include <memory>
#include <utility>

namespace orbisk {

namespace {

/// What a frame that fills the display is made when it no longer is to: three quarters of it.
wxRect smallerThan(const wxSize& display) {
    constexpr int quarters = 4;
    const wxSize size(3 * display.x / quarters, 3 * display.y / quarters);
    return {wxPoint((display.x - size.x) / 2, (display.y - size.y) / 2), size};
}

/// Moves the frame even where it believes to stand already: the window manager may know better.
void moveTo(wxFrame& frame, const wxPoint& position) {
    frame.Move(position + wxPoint(1, 0));
    frame.Move(position);
}

} // namespace

void restorePlacement(wxFrame& frame, const WindowRect& saved) {
    const wxSize display = wxGetDisplaySize();
    if (opensMaximised(saved, {display.x, display.y})) {
        frame.SetSize(smallerThan(display));
        return frame.Maximize();
    }
    const wxPoint position(saved.x, saved.y);
    frame.SetSize(saved.x, saved.y, saved.w, saved.h, wxSIZE_USE_EXISTING);
    const auto again = std::make_shared<bool>(true);
    frame.Bind(wxEVT_SHOW, [&frame, position, again](wxShowEvent& event) {
        event.Skip();
        if (event.IsShown() && std::exchange(*again, false))
            frame.CallAfter([&frame, position] { moveTo(frame, position); });
    });
}

WindowRect placementOf(wxFrame& frame) {
    const wxPoint position = platform::positionOnScreen(frame);
    const wxSize size = frame.GetSize();
    return {position.x, position.y, size.x, size.y};
}

} // namespace orbisk
