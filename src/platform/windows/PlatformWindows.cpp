#include "platform/Platform.h"
#include "platform/Process.h"

#include <direct.h>
#include <wx/apptrait.h>
#include <wx/bitmap.h>
#include <wx/cmdline.h>
#include <wx/icon.h>
#include <wx/msw/wrapwin.h>
#include <wx/strconv.h>
#include <wx/utils.h>
#include <wx/vector.h>

#include <cstdlib>

namespace orbisk::platform {

namespace {

/// The scales, in percent, at which each icon stands in the executable.
constexpr int iconScales[] = {100, 125, 150, 175, 200, 300};
constexpr int wholeScale = 100;
constexpr int programIconSides[] = {16, 24, 32, 48, 64, 128, 256};

/// The executable's icon of this name at this size; not a usable one where there is none.
wxIcon iconOfSide(const std::string& name, int side) {
    return wxIcon(wxString::FromUTF8(name).Upper(), wxBITMAP_TYPE_ICO_RESOURCE, side, side);
}

} // namespace

void prepareProcess() {
    settleProcess();
}

wxAppTraits* makeAppTraits() {
    return new wxGUIAppTraits;
}

bool hasDisplay() {
    return true;
}

wxBitmapBundle iconResource(const std::string& name, int side) {
    wxVector<wxBitmap> bitmaps;
    for (const int scale : iconScales) {
        const wxIcon icon = iconOfSide(name, side * scale / wholeScale);
        if (icon.IsOk())
            bitmaps.push_back(wxBitmap(icon));
    }
    return wxBitmapBundle::FromBitmaps(bitmaps);
}

wxIconBundle programIcon() {
    wxIconBundle icons;
    for (const int side : programIconSides) {
        const wxIcon icon = iconOfSide("aaaa", side);
        if (icon.IsOk())
            icons.AddIcon(icon);
    }
    return icons;
}

void openHelp(int) {
    // One compiled file has the help in every language.
    char folder[_MAX_PATH];
    if (_getcwd(folder, _MAX_PATH))
        wxExecute("hh.exe " + wxString(folder, wxConvLibc) + "\\help.chm", wxEXEC_ASYNC);
}

void closeHelp() {
    // The system's viewer is a program of its own, which the user closes.
}

std::string localPath(const wxString& path) {
    const wxScopedCharBuffer bytes = path.mb_str(wxConvLocal);
    return bytes ? std::string(bytes.data(), bytes.length()) : std::string();
}

wxString pathText(const std::string& localPath) {
    return wxString(localPath.c_str(), wxConvLibc);
}

wxArrayString commandWords(const wxString& command) {
    return wxCmdLineParser::ConvertStringToArgs(command, wxCMD_LINE_SPLIT_DOS);
}

void makeFlat(wxWindow& button) {
    // The system's own drawing has a border in any case; a button with a colour of its own is drawn
    // by the toolkit, which leaves the border and the margins out.
    button.SetBackgroundColour(button.GetParent()->GetBackgroundColour());
}

void nameForScreenReaders(wxWindow& window, const wxString& name) {
    // They read a window's text, which one that draws itself does not show.
    window.SetLabel(name);
}

void underlineLabel(wxButton&) {
    // An underlined font is enough here.
}

void sizePages(wxNotebook&) {
    // The notebook itself does so whenever its own size changes.
}

void closeMenu(wxMenu&) {
    EndMenu();
}

void leaveGraphicsContext() {
    wglMakeCurrent(nullptr, nullptr);
}

double pixelsPerUnit(const wxWindow&) {
    // The toolkit's window coordinates are physical pixels here.
    return 1.0;
}

void show(wxFrame& frame) {
    frame.Show();
}

wxPoint positionOnScreen(const wxFrame& frame) {
    return frame.GetPosition();
}

} // namespace orbisk::platform
