#include "platform/Artwork.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "platform/RunTimePath.h"
#include "settings/AppSettings.h"

#include <wx/apptrait.h>
#include <wx/cmdline.h>
#include <wx/filefn.h>
#include <wx/filename.h>
#include <wx/frame.h>
#include <wx/html/helpctrl.h>
#include <wx/menu.h>
#include <wx/notebook.h>
#include <wx/strconv.h>

#include <cstdlib>

#include <GL/glx.h>
#include <X11/Xlib.h>

// What is wanted of GTK itself, which the toolkit brings along without its headers.
extern "C" {
struct _GdkWindow; // NOLINT(bugprone-reserved-identifier)
struct _GtkMenu;   // NOLINT(bugprone-reserved-identifier)
struct _GtkWindow; // NOLINT(bugprone-reserved-identifier)
struct _AtkObject; // NOLINT(bugprone-reserved-identifier)
void gtk_menu_popdown(_GtkMenu* menu);
_AtkObject* gtk_widget_get_accessible(WXWidget widget);
void atk_object_set_name(_AtkObject* object, const char* name);
_GdkWindow* gtk_widget_get_window(WXWidget widget);
int gdk_window_is_visible(_GdkWindow* window);
void gdk_window_move_resize(_GdkWindow* window, int x, int y, int width, int height);
void gtk_window_get_position(_GtkWindow* window, int* x, int* y);
}

namespace orbisk::platform {

namespace {

const wxSize helpWindowSize(1000, 720);
constexpr int programIconSides[] = {16, 24, 32, 48, 96};

/// A help viewer for each language (`Language`), made at its first use and never freed: its windows
/// report to it until the very end.
wxHtmlHelpController*& helpViewer(int language) {
    static wxHtmlHelpController* viewers[] = {nullptr, nullptr};
    return viewers[language == languageChinese ? 0 : 1];
}

/// Reaches the toolkit's own way of styling a widget, which it keeps for its derived classes.
class StyledWindow : public wxWindow {
public:
    static void apply(wxWindow& window, const char* style) {
        using Styling = void (wxWindow::*)(const char*);
        (window.*static_cast<Styling>(&StyledWindow::GTKApplyCssStyle))(style);
    }
};

/// The toolkit's HTTP client, on a thread, makes its socket non-blocking for moments, and such a
/// socket is watched by the main thread's event loop, which may have its event in hand when the
/// socket is deleted. The manager of programs without windows hands no event to that loop.
class AppTraits : public wxGUIAppTraits {
public:
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): passing over the parent's is the purpose.
    wxFDIOManager* GetFDIOManager() override { return wxAppTraits::GetFDIOManager(); }
};

} // namespace

void prepareProcess() {
    // The viewer's draw thread and the toolkit share the connection to the X server.
    XInitThreads();
    settleProcess();
}

wxAppTraits* makeAppTraits() {
    return new AppTraits;
}

bool hasDisplay() {
    Display* display = std::getenv("DISPLAY") ? XOpenDisplay(nullptr) : nullptr;
    if (display)
        XCloseDisplay(display);
    return display != nullptr;
}

wxBitmapBundle iconResource(const std::string& name, int side) {
    return artwork(name, wxSize(side, side));
}

wxIconBundle programIcon() {
    const wxBitmapBundle drawing = iconResource("aaaa", programIconSides[0]);
    wxIconBundle icons;
    for (const int side : programIconSides) {
        wxIcon icon;
        icon.CopyFromBitmap(drawing.GetBitmap(wxSize(side, side)));
        if (icon.IsOk())
            icons.AddIcon(icon);
    }
    return icons;
}

void openHelp(int language) {
    const char* folder = language == languageChinese ? "zh" : "en";
    const wxFileName book(pathText(runTimePath({"help", folder, "orbisk.hhp"})));
    if (!book.FileExists())
        return;
    wxHtmlHelpController*& viewer = helpViewer(language);
    if (!viewer) {
        // One book is no shelf: its chapters stand at the top of the contents.
        viewer = new wxHtmlHelpController(wxHF_DEFAULT_STYLE | wxHF_MERGE_BOOKS);
        viewer->AddBook(book);
    }
    const bool alreadyOpen = viewer->GetFrame() != nullptr;
    viewer->DisplayContents();
    wxFrame* window = viewer->GetFrame();
    if (alreadyOpen || !window)
        return;
    window->SetIcons(programIcon());
    window->SetSize(window->FromDIP(helpWindowSize));
}

void closeHelp() {
    for (const int language : {languageChinese, languageEnglish})
        if (wxHtmlHelpController* viewer = helpViewer(language); viewer && viewer->GetFrame())
            viewer->Quit();
}

std::string localPath(const wxString& path) {
    const wxScopedCharBuffer bytes = path.mb_str(wxConvLibc);
    return bytes ? std::string(bytes.data(), bytes.length()) : std::string();
}

wxString pathText(const std::string& localPath) {
    return wxString(localPath.c_str(), wxConvLibc);
}

wxArrayString commandWords(const wxString& command) {
    return wxCmdLineParser::ConvertStringToArgs(command, wxCMD_LINE_SPLIT_UNIX);
}

void makeFlat(wxWindow& button) {
    StyledWindow::apply(button,
                        "* { padding:0; margin:0; min-width:0; min-height:0; border:none }");
}

void nameForScreenReaders(wxWindow& window, const wxString& name) {
    atk_object_set_name(gtk_widget_get_accessible(window.GetHandle()), name.utf8_str());
}

void underlineLabel(wxButton& button) {
    wxString text = button.GetLabelText();
    text.Replace("&", "&amp;");
    text.Replace("<", "&lt;");
    text.Replace(">", "&gt;");
    // A single underscore would mark the next letter as the button's mnemonic.
    text.Replace("_", "__");
    button.SetLabelMarkup("<u>" + text + "</u>");
}

void sizePages(wxNotebook& notebook) {
    const wxSize pageSize = notebook.GetSize() - notebook.CalcSizeFromPage(wxSize(0, 0));
    for (std::size_t page = 0; page < notebook.GetPageCount(); ++page)
        notebook.GetPage(page)->SetSize(pageSize);
}

void closeMenu(wxMenu& menu) {
    gtk_menu_popdown(reinterpret_cast<_GtkMenu*>(menu.m_menu));
}

void leaveGraphicsContext() {
    if (Display* display = glXGetCurrentDisplay())
        glXMakeContextCurrent(display, None, None, nullptr);
}

double pixelsPerUnit(const wxWindow& window) {
    return window.GetContentScaleFactor();
}

void show(wxFrame& frame) {
    frame.Show();
    // The toolkit asks for the width of the decorations first, and has made a window of two pixels
    // by one to ask with. It would be seen, and be what a maximised frame goes back to.
    _GdkWindow* window = gtk_widget_get_window(frame.GetHandle());
    if (!window || gdk_window_is_visible(window))
        return;
    const wxRect rect = frame.GetRect();
    gdk_window_move_resize(window, rect.x, rect.y, rect.width, rect.height);
}

wxPoint positionOnScreen(const wxFrame& frame) {
    // The toolkit's own answer forgets the decorations when a dialog of the same kind has closed.
    wxPoint position;
    gtk_window_get_position(reinterpret_cast<_GtkWindow*>(frame.GetHandle()), &position.x,
                            &position.y);
    return position;
}

} // namespace orbisk::platform
