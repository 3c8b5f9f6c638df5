#pragma once

#include <wx/arrstr.h>
#include <wx/bmpbndl.h>
#include <wx/button.h>
#include <wx/frame.h>
#include <wx/iconbndl.h>
#include <wx/string.h>
#include <wx/window.h>

#include <string>

class wxAppTraits;
class wxMenu;
class wxNotebook;

/// What differs between operating systems. This folder is the only place that knows which one the
/// program runs on.
namespace orbisk::platform {

/// Prepares the process before the toolkit and any graphics library start. A second call changes
/// nothing more.
void prepareProcess();

/// What the toolkit's application asks of the system; the caller's. Under it sockets are used by
/// threads of their own only: no event loop watches them.
wxAppTraits* makeAppTraits();

/// Whether there is a display to draw with.
bool hasDisplay();

/// The icon of this resource name (lower case), `side` × `side` pixels at 100 % and crisp at any
/// scale; an empty bundle when there is none.
wxBitmapBundle iconResource(const std::string& name, int side);

/// The program's own icon in the sizes that window managers ask for.
wxIconBundle programIcon();

/// Opens the help in the chosen language (`Language`), beside the running program. Absent help is
/// the viewer's own affair.
void openHelp(int language);

/// Closes what `openHelp` left open, before the program ends.
void closeHelp();

/// `path` in the local multibyte encoding, for libraries that take narrow file names; empty when
/// it cannot be converted.
std::string localPath(const wxString& path);

/// The text of a path in the local multibyte encoding; empty when it cannot be converted.
wxString pathText(const std::string& localPath);

/// The words of a command line, split as the system does before it runs one.
wxArrayString commandWords(const wxString& command);

/// Takes a borderless button's inner margins away, so that it fits where room is scarce.
void makeFlat(wxWindow& button);

/// Underlines a button's label where an underlined font alone does not.
void underlineLabel(wxButton& button);

/// What screen readers call a window that shows no text of its own.
void nameForScreenReaders(wxWindow& window, const wxString& name);

/// Gives the pages of a notebook that has its size but was not shown yet the size they will have.
void sizePages(wxNotebook& notebook);

/// Closes a context menu that is open.
void closeMenu(wxMenu& menu);

/// Leaves the calling thread without a current OpenGL context.
void leaveGraphicsContext();

/// Physical pixels to a unit of the toolkit's window coordinates (mouse positions, client sizes).
double pixelsPerUnit(const wxWindow& window);

/// Shows a frame for the first time, at once where it was placed and in its size. A maximised one
/// goes back to these.
void show(wxFrame& frame);

/// Upper left corner of a shown frame with its decorations, on the screen.
wxPoint positionOnScreen(const wxFrame& frame);

} // namespace orbisk::platform
