#include "support/Screen.h"

#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>

namespace orbisk::test {

namespace {

constexpr long wholeProperty = 1L << 20;

std::size_t countWindows(Display* display, Window window) {
    Window root = 0;
    Window parent = 0;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display, window, &root, &parent, &children, &count) == 0)
        return 0;
    std::size_t all = 1;
    for (unsigned int i = 0; i < count; ++i)
        all += countWindows(display, children[i]);
    if (children)
        XFree(children);
    return all;
}

/// A window may go while it is looked at; that is no reason to end the test.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

/// Bytes of a window's property, in the layout that the library gives; empty without it.
template <typename Item>
std::vector<Item> property(Display* display, Window window, const char* name) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, wholeProperty, False,
                       AnyPropertyType, &type, &format, &count, &left, &data);
    std::vector<Item> items;
    if (data) {
        const auto* first = reinterpret_cast<const Item*>(data);
        items.assign(first, first + count);
        XFree(data);
    }
    return items;
}

std::string titleOf(Display* display, Window window) {
    const auto title = property<char>(display, window, "_NET_WM_NAME");
    return {title.begin(), title.end()};
}

} // namespace

Screen::Screen() : m_display(XOpenDisplay(nullptr)) {
    EXPECT_NE(m_display, nullptr);
}

Screen::~Screen() {
    XCloseDisplay(m_display);
}

std::size_t Screen::windowCount() const {
    const auto former = XSetErrorHandler(ignoreError);
    const std::size_t count = countWindows(m_display, DefaultRootWindow(m_display));
    XSetErrorHandler(former);
    return count;
}

std::vector<std::string> Screen::titles() const {
    std::vector<std::string> titles;
    const auto former = XSetErrorHandler(ignoreError);
    const Window root = DefaultRootWindow(m_display);
    for (const Window window : property<Window>(m_display, root, "_NET_CLIENT_LIST"))
        titles.push_back(titleOf(m_display, window));
    XSetErrorHandler(former);
    return titles;
}

unsigned long Screen::windowOf(const std::string& title) const {
    const Window root = DefaultRootWindow(m_display);
    for (const Window window : property<Window>(m_display, root, "_NET_CLIENT_LIST"))
        if (titleOf(m_display, window) == title)
            return window;
    return 0;
}

wxSize Screen::sizeOf(const std::string& title) const {
    const auto former = XSetErrorHandler(ignoreError);
    XWindowAttributes attributes{};
    if (const Window window = windowOf(title); window != 0)
        XGetWindowAttributes(m_display, window, &attributes);
    XSetErrorHandler(former);
    return {attributes.width, attributes.height};
}

bool Screen::closeWindow(const std::string& title) const {
    const Window window = windowOf(title);
    if (window == 0)
        return false;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(m_display, "_NET_CLOSE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = CurrentTime;
    event.xclient.data.l[1] = 2; // comes from a pager, not from the program itself
    const bool sent = XSendEvent(m_display, DefaultRootWindow(m_display), False,
                                 SubstructureNotifyMask | SubstructureRedirectMask, &event) != 0;
    XSync(m_display, False);
    return sent;
}

void Screen::turnWheel(bool awayFromTheUser) const {
    const unsigned int button = awayFromTheUser ? Button4 : Button5;
    XTestFakeButtonEvent(m_display, button, True, CurrentTime);
    XTestFakeButtonEvent(m_display, button, False, CurrentTime);
    XSync(m_display, False);
}

std::set<unsigned long> Screen::colours(const wxRect& rect) const {
    std::set<unsigned long> colours;
    XImage* image = XGetImage(m_display, DefaultRootWindow(m_display), rect.x, rect.y,
                              static_cast<unsigned int>(rect.width),
                              static_cast<unsigned int>(rect.height), AllPlanes, ZPixmap);
    if (!image)
        return colours;
    for (int y = 0; y < rect.height; ++y)
        for (int x = 0; x < rect.width; ++x)
            colours.insert(XGetPixel(image, x, y));
    XDestroyImage(image);
    return colours;
}

} // namespace orbisk::test
