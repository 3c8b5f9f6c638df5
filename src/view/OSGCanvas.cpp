#include "view/OSGCanvas.h"

#include "app/ContextMenu.h"
#include "platform/Platform.h"
#include "view/ThreadingPause.h"

#include <wx/dcclient.h>
#include <wx/intl.h>
#include <wx/menu.h>
#include <wx/thread.h>

#include <algorithm>

namespace orbisk {

namespace {

constexpr unsigned int pickButton = 1;
constexpr unsigned int menuButton = 2;
constexpr unsigned int panButton = 2;
constexpr unsigned int zoomButton = 3;

/// The viewer's number of a toolkit button: the right button drives what the trackball takes as
/// its middle one (pan), the middle button what it takes as its right one (zoom).
unsigned int viewerButton(int toolkitButton) {
    switch (toolkitButton) {
    case wxMOUSE_BTN_MIDDLE:
        return zoomButton;
    case wxMOUSE_BTN_RIGHT:
        return panButton;
    default:
        return static_cast<unsigned int>(toolkitButton);
    }
}

CanvasPixel canvasPixel(const osg::Vec2f& position) {
    return {static_cast<int>(position.x()), static_cast<int>(position.y())};
}

/// Leaves the thread it lives in without a current context when that thread ends.
struct ContextLeaver {
    ~ContextLeaver() { platform::leaveGraphicsContext(); }
};

bool anyButtonDown(const wxMouseEvent& event) {
    return event.LeftIsDown() || event.MiddleIsDown() || event.RightIsDown() ||
           event.Aux1IsDown() || event.Aux2IsDown();
}

} // namespace

// clang-format off
wxBEGIN_EVENT_TABLE(OSGCanvas, wxGLCanvas)
    EVT_SIZE(OSGCanvas::onSize)
    EVT_PAINT(OSGCanvas::onPaint)
    EVT_ERASE_BACKGROUND(OSGCanvas::onEraseBackground)
    EVT_ENTER_WINDOW(OSGCanvas::onEnter)
    EVT_LEFT_DOWN(OSGCanvas::onButtonDown)
    EVT_MIDDLE_DOWN(OSGCanvas::onButtonDown)
    EVT_RIGHT_DOWN(OSGCanvas::onButtonDown)
    EVT_LEFT_UP(OSGCanvas::onButtonUp)
    EVT_MIDDLE_UP(OSGCanvas::onButtonUp)
    EVT_RIGHT_UP(OSGCanvas::onButtonUp)
    EVT_MOTION(OSGCanvas::onMotion)
    EVT_MOUSEWHEEL(OSGCanvas::onWheel)
wxEND_EVENT_TABLE()
// clang-format on

OSGCanvas::OSGCanvas(wxWindow* parent, wxWindowID id, const int* attributes, const wxPoint& pos,
                     const wxSize& size, long style, const wxString& name)
    : wxGLCanvas(parent, id, attributes, pos, size, style | wxFULL_REPAINT_ON_RESIZE, name,
                 wxNullPalette),
      m_context(this) {
    Bind(wxEVT_MENU, &OSGCanvas::onPickMenu, this, static_cast<int>(PickCommand::DeletePoint),
         static_cast<int>(PickCommand::ClearTravel));
}

OSGCanvas::~OSGCanvas() = default;

void OSGCanvas::makeCurrent() {
    m_context.SetCurrent(*this);
    // The main thread keeps its context; one that a draw thread ended with would never be freed.
    if (!wxIsMainThread()) {
        thread_local const ContextLeaver leaver;
        static_cast<void>(leaver);
    }
}

void OSGCanvas::setGraphicsWindow(GraphicsWindowWX* window) {
    m_graphicsWindow = window;
}

void OSGCanvas::setViewer(osgViewer::Viewer* viewer) {
    m_viewer = viewer;
}

void OSGCanvas::setInteraction(PickInteraction* interaction) {
    m_interaction = interaction;
}

ViewSize OSGCanvas::pixelSize() const {
    const double scale = platform::pixelsPerUnit(*this);
    const wxSize size = GetClientSize();
    // A canvas squeezed to nothing would have no aspect ratio, nor get one back by growing.
    return {std::max(1, wxRound(size.x * scale)), std::max(1, wxRound(size.y * scale))};
}

osg::Vec2f OSGCanvas::pixelPosition(const wxMouseEvent& event) const {
    const double scale = platform::pixelsPerUnit(*this);
    return {static_cast<float>(event.GetX() * scale), static_cast<float>(event.GetY() * scale)};
}

osgGA::EventQueue& OSGCanvas::queue() const {
    return *m_graphicsWindow->getEventQueue();
}

double OSGCanvas::eventTime() const {
    return queue().getTime();
}

void OSGCanvas::onSize(wxSizeEvent& event) {
    event.Skip();
    const ViewSize size = pixelSize();
    if (!m_graphicsWindow)
        return;
    // A frame in flight reads the viewport that resizing changes.
    const ThreadingPause pause(m_viewer.get());
    queue().windowResize(0, 0, size.w, size.h, eventTime());
    m_graphicsWindow->resized(0, 0, size.w, size.h);
}

void OSGCanvas::onPaint(wxPaintEvent&) {
    const wxPaintDC validatesTheDamagedRegion(this);
}

void OSGCanvas::onEraseBackground(wxEraseEvent&) {}

void OSGCanvas::onEnter(wxMouseEvent&) {
    SetFocus();
}

void OSGCanvas::onButtonDown(wxMouseEvent& event) {
    m_pressPosition = event.GetPosition();
    m_lastPosition = event.GetPosition();
    if (!m_graphicsWindow)
        return;
    const osg::Vec2f position = pixelPosition(event);
    queue().mouseButtonPress(position.x(), position.y(), viewerButton(event.GetButton()),
                             eventTime());
}

void OSGCanvas::onButtonUp(wxMouseEvent& event) {
    if (!m_graphicsWindow)
        return;
    const osg::Vec2f position = pixelPosition(event);
    const unsigned int button = viewerButton(event.GetButton());
    queue().mouseButtonRelease(position.x(), position.y(), button, eventTime());
    const bool isClick = event.GetPosition() == m_pressPosition;
    if (!isClick || !m_interaction)
        return;
    if (button == pickButton)
        m_interaction->onLeftClick(canvasPixel(position));
    else if (button == menuButton)
        showPickMenu(canvasPixel(position));
}

void OSGCanvas::showPickMenu(CanvasPixel pixel) {
    wxMenu menu;
    for (const PickMenuItem& item : m_interaction->onRightClick(pixel))
        menu.Append(static_cast<int>(item.command), wxGetTranslation(item.label))
            ->Enable(item.enabled);
    if (menu.GetMenuItemCount() > 0)
        popUp(*this, menu);
}

void OSGCanvas::onPickMenu(wxCommandEvent& event) {
    if (m_interaction)
        m_interaction->run(static_cast<PickCommand>(event.GetId()));
}

void OSGCanvas::onMotion(wxMouseEvent& event) {
    if (!m_graphicsWindow)
        return;
    const osg::Vec2f position = pixelPosition(event);
    if (anyButtonDown(event))
        queue().mouseMotion(position.x(), position.y(), eventTime());
    if (m_interaction)
        m_interaction->onMouseMotion(canvasPixel(position));
}

void OSGCanvas::onWheel(wxMouseEvent& event) {
    if (!m_graphicsWindow)
        return;
    const int notches = event.GetWheelRotation() / event.GetWheelDelta();
    const int lines = notches * event.GetLinesPerAction();
    // A turn of less than one notch also scrolls down.
    const auto direction =
        lines >= 0 ? osgGA::GUIEventAdapter::SCROLL_DOWN : osgGA::GUIEventAdapter::SCROLL_UP;
    queue().mouseScroll(direction, eventTime());
}

} // namespace orbisk
