#include "view/GraphicsWindowWX.h"

#include "view/OSGCanvas.h"

#include <wx/utils.h>

namespace orbisk {

GraphicsWindowWX::GraphicsWindowWX(OSGCanvas* canvas) : m_canvas(canvas) {
    _traits = new osg::GraphicsContext::Traits;
    const wxPoint position = canvas->GetPosition();
    const ViewSize size = canvas->pixelSize();
    _traits->x = position.x;
    _traits->y = position.y;
    _traits->width = size.w;
    _traits->height = size.h;
    init();
}

GraphicsWindowWX::~GraphicsWindowWX() = default;

void GraphicsWindowWX::init() {
    if (!valid())
        return;
    getEventQueue()->getCurrentEventState()->setMouseYOrientation(
        osgGA::GUIEventAdapter::Y_INCREASING_DOWNWARDS);
    setState(new osg::State);
    getState()->setGraphicsContext(this);
    const osg::GraphicsContext* shared = _traits->sharedContext.get();
    const unsigned int contextId = shared && shared->getState()
                                       ? shared->getState()->getContextID()
                                       : osg::GraphicsContext::createNewContextID();
    getState()->setContextID(contextId);
    osg::GraphicsContext::incrementContextIDUsageCount(contextId);
}

bool GraphicsWindowWX::valid() const {
    return true;
}

bool GraphicsWindowWX::realizeImplementation() {
    return true;
}

bool GraphicsWindowWX::isRealizedImplementation() const {
    return m_canvas->IsShownOnScreen();
}

void GraphicsWindowWX::closeImplementation() {}

bool GraphicsWindowWX::makeCurrentImplementation() {
    m_canvas->makeCurrent();
    return true;
}

bool GraphicsWindowWX::releaseContextImplementation() {
    return true;
}

void GraphicsWindowWX::swapBuffersImplementation() {
    m_canvas->SwapBuffers();
}

void GraphicsWindowWX::grabFocus() {
    m_canvas->SetFocus();
}

void GraphicsWindowWX::grabFocusIfPointerInWindow() {
    if (wxFindWindowAtPoint(wxGetMousePosition()) == m_canvas)
        m_canvas->SetFocus();
}

} // namespace orbisk
