#include "support/ShownWindow.h"

#include <memory>
#include <stdexcept>
#include <vector>

#include <X11/Xlib.h>

namespace orbisk::bench {

namespace {

/// A frame's window is a child of the screen's, or a grandchild where a window manager framed it.
constexpr int deepestFrame = 2;

struct Freeing {
    void operator()(void* memory) const { XFree(memory); }
};

/// A window may go while it is looked at.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

bool isOnScreen(Display* display, Window window) {
    XWindowAttributes attributes{};
    return XGetWindowAttributes(display, window, &attributes) != 0 &&
           attributes.map_state == IsViewable;
}

bool isTitled(Display* display, Window window, const std::string& title) {
    char* name = nullptr;
    if (XFetchName(display, window, &name) == 0)
        return false;
    const std::unique_ptr<char, Freeing> owner(name);
    return name == title;
}

std::vector<Window> childrenOf(Display* display, Window window) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display, window, &root, &parent, &children, &count) == 0 || !children)
        return {};
    const std::unique_ptr<Window, Freeing> owner(children);
    return {children, children + count};
}

/// The window of this title below `window`; `None` where there is none on the screen.
Window findBelow(Display* display, Window window, const std::string& title, int depth) {
    for (const Window child : childrenOf(display, window)) {
        if (isTitled(display, child, title) && isOnScreen(display, child))
            return child;
        if (depth == deepestFrame)
            continue;
        if (const Window found = findBelow(display, child, title, depth + 1); found != None)
            return found;
    }
    return None;
}

} // namespace

ShownWindow::ShownWindow() : m_display(XOpenDisplay(nullptr)) {
    if (!m_display)
        throw std::runtime_error("no display");
    XSetErrorHandler(ignoreError);
}

ShownWindow::~ShownWindow() {
    XCloseDisplay(m_display);
}

bool ShownWindow::exists(const std::string& title) const {
    return findBelow(m_display, DefaultRootWindow(m_display), title, 1) != None;
}

void ShownWindow::close(const std::string& title) const {
    XEvent event{};
    XClientMessageEvent& message = event.xclient;
    message.type = ClientMessage;
    message.window = findBelow(m_display, DefaultRootWindow(m_display), title, 1);
    if (message.window == None)
        return;
    message.message_type = XInternAtom(m_display, "WM_PROTOCOLS", False);
    message.format = 32;
    message.data.l[0] = static_cast<long>(XInternAtom(m_display, "WM_DELETE_WINDOW", False));
    message.data.l[1] = CurrentTime;
    XSendEvent(m_display, message.window, False, NoEventMask, &event);
    XFlush(m_display);
}

} // namespace orbisk::bench
