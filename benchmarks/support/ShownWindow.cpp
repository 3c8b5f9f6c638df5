#include "support/ShownWindow.h"

#include <poll.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include <X11/Xlib.h>

namespace orbisk::bench {

namespace {

/// A frame's window is a child of the screen's, or a grandchild where a window manager framed it.
constexpr int deepestFrame = 2;
/// Milliseconds between looks at what goes on inside a window manager's frame, which the server
/// doesn't tell, and between looks at everything.
constexpr int lookAgain = 1;
constexpr int lookAtLeast = 50;

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

class Patience {
public:
    Patience(std::string title, std::chrono::milliseconds limit)
        : m_title(std::move(title)), m_end(std::chrono::steady_clock::now() + limit) {}

    void check() const {
        if (std::chrono::steady_clock::now() > m_end)
            throw std::runtime_error("waited in vain for the window " + m_title);
    }

private:
    std::string m_title;
    std::chrono::steady_clock::time_point m_end;
};

} // namespace

ShownWindow::ShownWindow() : m_display(XOpenDisplay(nullptr)) {
    if (!m_display)
        throw std::runtime_error("no display");
    XSetErrorHandler(ignoreError);
    XSelectInput(m_display, DefaultRootWindow(m_display), SubstructureNotifyMask);
}

ShownWindow::~ShownWindow() {
    XCloseDisplay(m_display);
}

bool ShownWindow::exists(const std::string& title) const {
    return findBelow(m_display, DefaultRootWindow(m_display), title, 1) != None;
}

void ShownWindow::waitUntilShown(const std::string& title, std::chrono::milliseconds limit) const {
    XSync(m_display, True);
    const Patience patience(title, limit);
    // A help text or a menu may be mapped after the frame.
    std::vector<Window> mapped;
    const auto isTitledBelow = [&](Window window) {
        return findBelow(m_display, window, title, deepestFrame) != None;
    };
    while (std::none_of(mapped.begin(), mapped.end(), isTitledBelow)) {
        patience.check();
        pollfd connection{ConnectionNumber(m_display), POLLIN, 0};
        if (XPending(m_display) == 0)
            poll(&connection, 1, mapped.empty() ? lookAtLeast : lookAgain);
        XEvent event{};
        while (XPending(m_display) > 0) {
            XNextEvent(m_display, &event);
            if (event.type == MapNotify)
                mapped.push_back(event.xmap.window);
        }
    }
}

void ShownWindow::waitUntilGone(const std::string& title, std::chrono::milliseconds limit) const {
    const Patience patience(title, limit);
    while (exists(title)) {
        patience.check();
        poll(nullptr, 0, lookAtLeast);
    }
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
