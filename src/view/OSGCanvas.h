#pragma once

#include "measure/PickInteraction.h"
#include "view/GraphicsWindowWX.h"
#include "view/ViewCamera.h"

#include <osgViewer/Viewer>
#include <wx/glcanvas.h>

namespace orbisk {

/// The OpenGL window of the 3D view. It owns the context that the viewer draws with and feeds size
/// and mouse events into the viewer's event queue, in physical pixels. It draws nothing itself:
/// frames come from the main frame's idle step. Main thread, but for `makeCurrent` and
/// `SwapBuffers`, which the viewer's draw thread calls.
class OSGCanvas : public wxGLCanvas {
public:
    OSGCanvas(wxWindow* parent, wxWindowID id, const int* attributes, const wxPoint& pos,
              const wxSize& size, long style, const wxString& name);
    ~OSGCanvas() override;

    /// Makes the canvas's context current in the calling thread.
    void makeCurrent();

    /// From now on events go to `window`; null drops them.
    void setGraphicsWindow(GraphicsWindowWX* window);

    GraphicsWindowWX* graphicsWindow() const { return m_graphicsWindow.get(); }

    /// The viewer that draws here; null while none does.
    void setViewer(osgViewer::Viewer* viewer);

    /// What clicks and motions measure with from now on; null: nothing.
    void setInteraction(PickInteraction* interaction);

    /// Client size in physical pixels, at least one each way.
    ViewSize pixelSize() const;

    wxPoint pressPosition() const { return m_pressPosition; }

    wxPoint lastPosition() const { return m_lastPosition; }

private:
    void onSize(wxSizeEvent& event);
    void onPaint(wxPaintEvent& event);
    void onEraseBackground(wxEraseEvent& event);
    void onEnter(wxMouseEvent& event);
    void onButtonDown(wxMouseEvent& event);
    void onButtonUp(wxMouseEvent& event);
    void onMotion(wxMouseEvent& event);
    void onWheel(wxMouseEvent& event);
    void onPickMenu(wxCommandEvent& event);
    void showPickMenu(CanvasPixel pixel);

    /// An event's position in physical pixels, origin top left.
    osg::Vec2f pixelPosition(const wxMouseEvent& event) const;
    osgGA::EventQueue& queue() const;
    double eventTime() const;

    wxPoint m_pressPosition;
    wxPoint m_lastPosition;
    osg::ref_ptr<GraphicsWindowWX> m_graphicsWindow;
    osg::observer_ptr<osgViewer::Viewer> m_viewer;
    PickInteraction* m_interaction = nullptr;
    wxGLContext m_context;

    wxDECLARE_EVENT_TABLE();
};

} // namespace orbisk
