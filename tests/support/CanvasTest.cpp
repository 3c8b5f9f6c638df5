#include "support/CanvasTest.h"

#include "view/OSGCanvas.h"

#include <wx/timer.h>
#include <wx/uiaction.h>

namespace orbisk::test {

void CanvasTest::startWith(const std::string& model) {
    writeSettings(R"({"x":20,"y":20,"w":820,"h":620})", languageEnglish);
    start();
    load(model);
    measurementSet().clear();
    runFor(0.3);
}

wxPoint CanvasTest::middle() {
    const wxSize size = frame()->canvas()->GetClientSize();
    return {size.x / 2, size.y / 2};
}

void CanvasTest::clickAt(const wxPoint& place, int button) {
    wxUIActionSimulator mouse;
    mouse.MouseMove(onScreen(*frame()->canvas(), place));
    runFor(0.1);
    mouse.MouseClick(button);
    runFor(0.2);
}

void CanvasTest::chooseFromMenu(const wxPoint& place, const std::string& label) {
    OSGCanvas& canvas = *frame()->canvas();
    // The menu has an event loop of its own, in which timers run.
    wxTimer timer;
    int downs = 0;
    timer.Bind(wxEVT_TIMER, [&](wxTimerEvent&) {
        wxUIActionSimulator keyboard;
        for (int i = 0; i < downs; ++i)
            keyboard.Char(WXK_DOWN);
        keyboard.Char(WXK_RETURN);
    });
    bool closed = false;
    const auto onOpen = [&](wxMenuEvent& event) {
        for (const wxMenuItem* item : event.GetMenu()->GetMenuItems()) {
            downs += item->IsEnabled() ? 1 : 0;
            if (item->GetItemLabelText() == label)
                break;
        }
        timer.StartOnce(200);
    };
    const auto onClose = [&closed](wxMenuEvent&) { closed = true; };
    canvas.Bind(wxEVT_MENU_OPEN, onOpen);
    canvas.Bind(wxEVT_MENU_CLOSE, onClose);
    clickAt(place, wxMOUSE_BTN_RIGHT);
    EXPECT_TRUE(runUntil([&closed] { return closed; }, 10.0));
    runFor(0.2);
    canvas.Unbind(wxEVT_MENU_OPEN, onOpen);
    canvas.Unbind(wxEVT_MENU_CLOSE, onClose);
}

} // namespace orbisk::test
