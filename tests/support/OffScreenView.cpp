#include "support/OffScreenView.h"

#include "view/ViewCamera.h"

#include <gtest/gtest.h>
#include <osg/GraphicsContext>

namespace orbisk::test {

namespace {

class Capture : public osg::Camera::DrawCallback {
public:
    Capture(int width, int height) : m_width(width), m_height(height), m_image(new osg::Image) {}

    void operator()(osg::RenderInfo&) const override {
        m_image->readPixels(0, 0, m_width, m_height, GL_RGB, GL_UNSIGNED_BYTE);
    }

    osg::ref_ptr<osg::Image> image() const { return m_image; }

private:
    int m_width;
    int m_height;
    osg::ref_ptr<osg::Image> m_image;
};

} // namespace

OffScreenView::OffScreenView(int width, int height, double fovy,
                             osgViewer::ViewerBase::ThreadingModel threading)
    : m_width(width), m_height(height) {
    const osg::ref_ptr<osg::GraphicsContext::Traits> traits = new osg::GraphicsContext::Traits;
    traits->readDISPLAY();
    traits->setUndefinedScreenDetailsToDefaultScreen();
    traits->width = width;
    traits->height = height;
    traits->pbuffer = true;
    traits->doubleBuffer = false;
    const osg::ref_ptr<osg::GraphicsContext> context =
        osg::GraphicsContext::createGraphicsContext(traits.get());
    if (!context || !context->valid())
        ADD_FAILURE() << "cannot draw off the screen";
    m_viewer.setThreadingModel(threading);
    setUpCamera(camera(), fovy, {width, height});
    camera().setGraphicsContext(context);
    camera().setDrawBuffer(GL_FRONT);
    camera().setReadBuffer(GL_FRONT);
}

osg::ref_ptr<osg::Image> OffScreenView::draw() {
    if (!m_viewer.isRealized())
        m_viewer.realize();
    const bool threaded = m_viewer.areThreadsRunning();
    // Without its thread the viewer draws at once, and nothing else is being drawn.
    if (threaded)
        m_viewer.stopThreading();
    const osg::ref_ptr<Capture> capture = new Capture(m_width, m_height);
    camera().setFinalDrawCallback(capture);
    m_viewer.frame();
    camera().setFinalDrawCallback(nullptr);
    if (threaded)
        m_viewer.startThreading();
    return capture->image();
}

void OffScreenView::drawUnseen() {
    if (!m_viewer.isRealized())
        m_viewer.realize();
    m_viewer.frame();
}

} // namespace orbisk::test
