#include <wx/app.h>
#include <wx/frame.h>

namespace {

/// Shows a frame with nothing in it: the least that a program with a window can do.
class EmptyApp : public wxApp {
public:
    bool OnInit() override {
        (new wxFrame(nullptr, wxID_ANY, "Empty frame"))->Show();
        return true;
    }
};

} // namespace

wxIMPLEMENT_APP(EmptyApp);
